#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "Tessarune/refinement/HistoryRefinementOutcome.h"
#include "TessaruneCore/host/Task.h"

#include <stop_token>
#include <string>

namespace tessarune {

/// Transcribes a recording again, translates it where translation is on, and says what came of it.
/// Ctrl-C leaves the transcript as it is. Gives the status to end with. Main queue.
Task<int> refineRecording(Program& program, const TerminalOptions& options, RefineCommand command);

/// What the settings ask of a recording's refinement. A language that cannot be had is said and
/// left out.
HistoryRefinementRequest refinementRequest(const Program& program, const UUID& id,
                                           const std::string& audioPath);

/// Refines and says how far it is, without a word at the end; `stop` gives it up.
Task<HistoryRefinementOutcome> refineWithProgress(Program& program, TerminalOptions options,
                                                  HistoryRefinementRequest request,
                                                  std::string model, std::stop_token stop);

/// Refines the session that was just saved, for somebody who watches. Ctrl-C leaves its transcript
/// as it is.
Task<void> refineAfterSession(Program& program, const TerminalOptions& options,
                              HistoryRefinementRequest request);

/// What came of it: as JSON, or as a line, `good` for a transcript that was made and `bad` for one
/// that failed.
void tellOutcomeOf(const TerminalOptions& options, const UUID& id,
                   const HistoryRefinementOutcome& outcome, const std::string& good,
                   const std::string& bad);

/// The status to end with after a refinement.
ExitStatus statusOf(const HistoryRefinementOutcome& outcome);

} // namespace tessarune
