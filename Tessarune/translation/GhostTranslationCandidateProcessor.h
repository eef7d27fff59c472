#pragma once

#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "Tessarune/translation/TranslationObservation.h"
#include "Tessarune/translation/TranslationRunContext.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>

namespace tessarune {

/// Translates a text that is not committed yet, as a preview. A preview is disposable: a late
/// answer is dropped, a failure is only written down. Main queue.
namespace GhostTranslationCandidateProcessor {

Task<void> process(std::string candidate, TranslationRunContext context, UUID requestID,
                   std::shared_ptr<LiveTranslationRuntime> runtime,
                   std::function<void(const TranslationObservation&)> append,
                   std::function<void(const std::string& text)> setGhostTranslationText,
                   std::stop_token stop);

}

/// Makes such a translation the runtime's preview.
namespace GhostTranslationTaskCoordinator {

using Process = std::function<Task<void>(std::string candidate, TranslationRunContext context,
                                         UUID requestID, std::stop_token stop)>;
void start(LiveTranslationRuntime& runtime, const UUID& requestID, std::string candidate,
           TranslationRunContext context, Process process);

} // namespace GhostTranslationTaskCoordinator

} // namespace tessarune
