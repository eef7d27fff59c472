#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

// What changes recorded sessions. Refused with ExitStatus::dataInUse while another Tessarune has
// the data folder. Each gives the status to end with. Main queue.

Task<int> setNote(Program& program, const TerminalOptions& options, SetNoteCommand command);
/// Deletes all of them or none. Asks, unless the command is certain.
Task<int> deleteRecordings(Program& program, const TerminalOptions& options,
                           DeleteRecordingsCommand command);

} // namespace tessarune
