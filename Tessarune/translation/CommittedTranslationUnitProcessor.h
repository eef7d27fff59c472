#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <memory>
#include <stop_token>

namespace tessarune {

class LiveTranscriptTranslation;

/// Translates one unit: its automatic retry, the classification of its failure, and the recovery
/// of the language pair. Main queue; suspended only while the translator works or a delay runs.
namespace CommittedTranslationUnitProcessor {

/// True if the queue may continue.
Task<bool> process(std::shared_ptr<LiveTranscriptTranslation> translation,
                   CommittedTranslationUnit unit, TranslationRunContext context,
                   std::stop_token stop);

} // namespace CommittedTranslationUnitProcessor

} // namespace tessarune
