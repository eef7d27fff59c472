#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "Tessarune/history/HistoryItem.h"

#include <optional>
#include <string>
#include <variant>

namespace tessarune {

/// The recording whose ID begins with `id`, in either case, listed or not. None, several or a
/// catalog that cannot be read: prints which it is, and gives the status to end with. Main queue.
std::variant<HistoryItem, int> chosenRecording(Program& program, const std::string& id);

/// The process that records the session now; nothing for one that is over, or was cut off.
std::optional<int> recorderOf(const Program& program, const HistoryItem& item);

/// One line about a recording that fits a screen: its ID, or as much of it as a person types, and
/// its note, which tells more than `text`, how the session began.
std::string recordingRow(const HistoryItem& item, const std::string& text, bool wholeID = false);

/// Makes this process the one that may change recordings; otherwise says why it is not.
std::optional<ExitStatus> problemOfDataFolder(Program& program);

/// As `problemOfDataFolder`, then puts the folder in order and tells what came of it.
std::optional<ExitStatus> prepareDataFolder(Program& program);

} // namespace tessarune
