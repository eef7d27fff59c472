#pragma once

#include "Terminal/RunOutput.h"
#include "Terminal/TerminalOptions.h"
#include "Tessarune/app/Application.h"

#include <string>
#include <vector>

/// What a run settles before anybody is heard. Main queue; each throws RunFailure where there can
/// be no run.
namespace tessarune::RunPreparation {

/// The settings of this run as the command line has them.
void overrideSettings(Application& application, const CaptionsCommand& command);

/// A session downloads nothing: reports a missing or damaged model before it begins.
void checkModel(const Application& application);

/// Two programs must never write one catalog; the remains of a crash are repaired first. Reports
/// the result; returns false if the disk allows no recording.
bool prepareToRecord(Application& application, const CaptionsCommand& command,
                     const RunOutput& output);

/// Messages about what was repaired after a crash, for the user.
std::vector<std::string> repairTexts(const Application::Preparation& found);

} // namespace tessarune::RunPreparation
