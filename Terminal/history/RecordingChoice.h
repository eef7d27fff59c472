#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "Tessarune/history/HistoryItem.h"

#include <optional>
#include <string>
#include <variant>

namespace tessarune {

/// The recording whose ID begins with `id`, in upper or lower case, even if the history list leaves
/// the recording out. If there is none or more than one, or if the catalog is unreadable, prints
/// that and returns the exit status. Main queue.
std::variant<HistoryItem, int> chosenRecording(Program& program, const std::string& id);

/// The process that is recording the session; `nullopt` if the session is over or was interrupted.
std::optional<int> recorderOf(const Program& program, const HistoryItem& item);

/// One line about a recording, which fits a screen: its ID, shortened unless `fullID`, its time,
/// its length, and its note. Without a note, the line ends with the beginning of `text`, usually
/// the transcript.
std::string recordingRow(const HistoryItem& item, const std::string& text, bool fullID = false);

/// Locks the data folder, so that only this process may change recordings. If that is impossible,
/// prints why and returns the exit status.
std::optional<ExitStatus> lockDataFolder(Program& program);

/// Does the same as `lockDataFolder`, then repairs the folder and prints what was repaired. Also
/// prints which interrupted imports should be refined, but leaves out the recording `toRefine`.
std::optional<ExitStatus> prepareDataFolder(Program& program,
                                            const std::optional<UUID>& toRefine = {});

} // namespace tessarune
