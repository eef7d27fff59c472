#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// Commands that change recorded sessions. Refused with ExitStatus::dataInUse while another
// Tessarune has the data folder. Each returns the exit status. Main queue.

Task<int> setNote(Program& program, const TerminalOptions& options, SetNoteCommand command);
/// Deletes all of them or none. Asks, unless the command confirms it.
Task<int> deleteRecordings(Program& program, const TerminalOptions& options,
                           DeleteRecordingsCommand command);

} // namespace tessarune
