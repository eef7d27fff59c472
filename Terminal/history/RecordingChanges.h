#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// Commands that change recorded sessions. They are refused with ExitStatus::dataInUse while another
// Tessarune uses the data folder. Each returns the exit status. Main queue.

Task<int> setNote(Program& program, const TerminalOptions& options, SetNoteCommand command);
/// Asks the user, unless the command already confirms the deletion. Deletes nothing if the user
/// declines or if one of the recordings is not found. If a recording cannot be deleted, the command
/// ends, and the remaining recordings stay.
Task<int> deleteRecordings(Program& program, const TerminalOptions& options,
                           DeleteRecordingsCommand command);

} // namespace tessarune
