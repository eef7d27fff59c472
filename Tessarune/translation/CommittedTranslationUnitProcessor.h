#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <memory>
#include <stop_token>

namespace tessarune {

class LiveTranscriptTranslation;

/// Translates one unit, with one retry. Classifies a failure; after several failed units in a row,
/// prepares the language pair again. Main queue; suspends only while the translator works and
/// during the delay before the retry.
namespace CommittedTranslationUnitProcessor {

/// Returns whether the run may continue with the next unit.
Task<bool> process(std::shared_ptr<LiveTranscriptTranslation> translation,
                   CommittedTranslationUnit unit, TranslationRunContext context,
                   std::stop_token stop);

} // namespace CommittedTranslationUnitProcessor

} // namespace tessarune
