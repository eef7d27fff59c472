#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "Tessarune/refinement/HistoryRefinementOutcome.h"
#include "TessaruneCore/host/Task.h"

#include <stop_token>
#include <string>

namespace tessarune {

/// Transcribes a recording again, translates it if translation is on, and reports the result.
/// Ctrl-C keeps the former transcript or, once the new one is saved, the former translation.
/// Returns the exit status. Main queue.
Task<int> refineRecording(Program& program, const TerminalOptions& options, RefineCommand command);

/// The request to refine a recording, with the options of the settings. If the target language is
/// unavailable, the request asks for no translation; prints why, unless `--quiet` is given.
HistoryRefinementRequest refinementRequest(const Program& program, const TerminalOptions& options,
                                           const UUID& id, const std::string& audioPath);

/// Refines and reports the progress, but not the outcome; `stop` cancels it.
Task<HistoryRefinementOutcome> refineWithProgress(Program& program, TerminalOptions options,
                                                  HistoryRefinementRequest request,
                                                  std::string model, std::stop_token stop);

/// Refines the session that was just saved, for a user at the terminal. Ctrl-C works as in
/// `refineRecording`.
Task<void> refineAfterSession(Program& program, const TerminalOptions& options,
                              HistoryRefinementRequest request);

/// Prints the outcome: as JSON, or as text. The text of a success is `good`, which --quiet
/// suppresses; that of a failure is `bad`.
void reportOutcome(const TerminalOptions& options, const UUID& id,
                   const HistoryRefinementOutcome& outcome, const std::string& good,
                   const std::string& bad);

/// The exit status after a refinement.
ExitStatus statusOf(const HistoryRefinementOutcome& outcome);

} // namespace tessarune
