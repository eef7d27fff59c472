#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// Commands that change recorded sessions. They are refused with ExitStatus::dataInUse while another
// Tessarune has the data folder. Each returns the exit status. Main queue.

Task<int> setNote(Program& program, const TerminalOptions& options, SetNoteCommand command);
/// Deletes none if one is not found or the user does not agree; asks, unless the command confirms
/// the deletion. A session that cannot be deleted ends the command, and the remaining ones stay.
Task<int> deleteRecordings(Program& program, const TerminalOptions& options,
                           DeleteRecordingsCommand command);

} // namespace tessarune
