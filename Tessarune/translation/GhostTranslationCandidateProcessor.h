#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <stop_token>
#include <string>

namespace tessarune {

class LiveTranscriptTranslation;

/// Translates a text that is not committed yet, as a preview. A preview is disposable: a late
/// answer is dropped, and a failure is only recorded for diagnosis. Main queue.
namespace GhostTranslationCandidateProcessor {

Task<void> process(std::shared_ptr<LiveTranscriptTranslation> translation, std::string candidate,
                   TranslationRunContext context, UUID requestID, std::stop_token stop);

}

} // namespace tessarune
