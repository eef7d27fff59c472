#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "Tessarune/history/HistoryItem.h"

#include <optional>
#include <string>
#include <variant>

namespace tessarune {

/// The recording whose ID begins with `id`, in either case, listed or not. If there is none, or
/// several, or the catalog is unreadable: prints that, and returns the exit status. Main queue.
std::variant<HistoryItem, int> chosenRecording(Program& program, const std::string& id);

/// The process that is recording the session; `nullopt` if the session is over or was interrupted.
std::optional<int> recorderOf(const Program& program, const HistoryItem& item);

/// One line about a recording that fits a screen: its ID, possibly shortened, and its note, which
/// tells more than `text`, the beginning of its transcript.
std::string recordingRow(const HistoryItem& item, const std::string& text, bool wholeID = false);

/// Makes this process the one that may change recordings, or prints why that is impossible.
std::optional<ExitStatus> problemOfDataFolder(Program& program);

/// As `problemOfDataFolder`, then puts the folder in order and tells what came of it; not that the
/// recording `toRefine` should be refined.
std::optional<ExitStatus> prepareDataFolder(Program& program,
                                            const std::optional<UUID>& toRefine = {});

} // namespace tessarune
