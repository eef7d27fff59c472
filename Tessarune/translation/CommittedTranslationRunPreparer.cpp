#include "Tessarune/translation/CommittedTranslationRunPreparer.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune::CommittedTranslationRunPreparer {

Result prepare(LiveTranslationRuntime& runtime) {
    using namespace TranslationSupport;
    const auto settings = runtime.settings();
    if (isDisabledBackend(settings.translationBackend))
        return Idle();
    if (!isAppleBackend(settings.translationBackend))
        return Blocked{backendNotConnectedMessage(settings.translationBackend),
                       backendNotConnectedSentence(settings.translationBackend)};
    if (runtime.hasCommittedTask())
        return Idle();
    auto context = TranslationRunContext::forTarget(settings.translationTargetLanguage);
    if (!context.passThrough && !runtime.translator())
        return Blocked{localized(appleOfflineUnsupportedMessage),
                       localized(appleOfflineUnsupportedSentence)};
    return context;
}

} // namespace tessarune::CommittedTranslationRunPreparer
