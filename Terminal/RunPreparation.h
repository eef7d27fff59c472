#pragma once

#include "Terminal/RunOutput.h"
#include "Terminal/TerminalOptions.h"
#include "Tessarune/app/Application.h"

#include <string>
#include <vector>

/// The preparations of a run before it listens. Main queue. `checkModel` and `prepareToRecord`
/// throw RunFailure if the run is impossible.
namespace tessarune::RunPreparation {

/// Applies `--no-record` and `--locale` to this run. Also makes the run continue through silence,
/// unless its source is live and the user has stored a limit of silence.
void overrideSettings(Application& application, const CaptionsCommand& command);

/// Throws if the speech model is missing or damaged, because a session downloads nothing.
void checkModel(const Application& application);

/// Locks the data folder, because two programs must never write one catalog, and repairs what a
/// crash left behind. Reports the result. Returns false if the disk allows no recording.
bool prepareToRecord(Application& application, const CaptionsCommand& command,
                     const RunOutput& output);

/// Messages for the user: what was repaired after a crash, and which imports were interrupted.
std::vector<std::string> repairTexts(const Application::Preparation& found);

} // namespace tessarune::RunPreparation
