#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <memory>
#include <stop_token>

namespace tessarune {

class LiveTranscriptTranslation;

/// Translates one unit, retries once, classifies a failure and recovers the language pair. Main
/// queue; suspends only while the translator works and during the delay before the retry.
namespace CommittedTranslationUnitProcessor {

/// True if the queue may continue.
Task<bool> process(std::shared_ptr<LiveTranscriptTranslation> translation,
                   CommittedTranslationUnit unit, TranslationRunContext context,
                   std::stop_token stop);

} // namespace CommittedTranslationUnitProcessor

} // namespace tessarune
