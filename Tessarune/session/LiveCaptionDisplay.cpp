#include "Tessarune/session/LiveCaptionDisplay.h"

#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

#include <algorithm>
#include <utility>

namespace tessarune {

LiveCaptionDisplay::LiveCaptionDisplay(Host& host, AppSettings& settings,
                                       SessionDiagnostics& diagnostics,
                                       const NotificationCenter* notifications)
    : host_(host),
      settings_(settings),
      diagnostics_(diagnostics),
      cache_([&host] { return host.now(); }),
      store_([&host] { return host.now(); }, notifications),
      settingsObserver_(settings, [this](const std::string& name, const std::string& value) {
          diagnostics_.recordCaptionDisplaySettingChange(name, value);
      }) {}

void LiveCaptionDisplay::refresh(const std::string& reason, const SessionView& view,
                                 const LiveCaptionDisplayTranslationPatch* patch) {
    const double startedAt = host_.now();
    const bool force = LiveCaptionDisplayCache::isForced(reason);
    const LiveCaptions& captions = view.captions;
    cache_.update({*captions.committedSegments, *captions.liveLeadingSentences,
                   *captions.softCaptionSegments, *captions.currentPartial,
                   *view.clearedSegmentIDs},
                  force, patch);
    LiveCaptionDisplayFrame frame = cache_.frame();
    frame.ghostTranslationText = TranslationPresentationBuilder::visibleGhostText(
        *view.translation.ghostTranslationText, *settings_.softTranslationEnabled);
    if (!frame.ghostTranslationText.empty())
        frame.ghostTranslationSourceText = view.translation.ghostTranslationSourceText;
    frame.translationStatus = translationStatus(*captions.committedSegments,
                                                *view.translation.translationStatusMessage, force);
    frame.statusMessage = view.status->text();
    frame.sessionPhase = *view.sessionPhase;
    const double buildSeconds = host_.now() - startedAt;
    const LiveCaptionDisplayUpdateResult result = store_.update(std::move(frame));

    buildSeconds_ += buildSeconds;
    buildMaxMS_ = std::max(buildMaxMS_, buildSeconds * 1000);
    sourceSeconds_ += cache_.lastSourceUpdateElapsed();
    translationSeconds_ += cache_.lastTranslationUpdateElapsed();
    diagnostics_.captionDisplayRefreshed({startedAt, reason, buildSeconds, result, store_, cache_});
}

SubtitleTranslationStatusViewState
LiveCaptionDisplay::translationStatus(std::span<const CaptionSegment> committed,
                                      const std::string& message, bool force) {
    // The search for an untranslated row begins after the rows that are known to be translated:
    // rows are translated in order, and a refresh is forced when translations have been removed.
    translatedRows_ = force ? 0 : std::min(translatedRows_, committed.size());
    while (translatedRows_ < committed.size() && committed[translatedRows_].translatedText)
        ++translatedRows_;

    SubtitleTranslationStatusViewState status;
    status.hasIncomplete = translatedRows_ < committed.size();
    TranslationPresentationBuilder::StatusInput input;
    input.backend = *settings_.translationBackend;
    input.target = *settings_.translationTargetLanguage;
    input.statusMessage = message;
    // The status beside the captions shows only what needs attention, not the progress.
    input.includeProgress = false;
    status.text = TranslationPresentationBuilder::statusText({}, input);
    status.canRetryIncomplete =
        status.hasIncomplete &&
        TranslationPresentationBuilder::backendCanRun(input.backend, input.target);
    return status;
}

PerfStats LiveCaptionDisplay::perfStats() const {
    return {{"captionDisplayUpdateRequests", store_.perf.updateRequests},
            {"captionDisplayPublishedFrames", store_.perf.publishedFrames},
            {"captionDisplaySkippedFramePublishes", store_.perf.skippedFramePublishes},
            {"captionDisplayFrameCompareSeconds", store_.perf.frameCompareSeconds},
            {"captionDisplayFrameCompareMaxMS", store_.perf.frameCompareMaxMS},
            {"captionDisplayBuildSeconds", buildSeconds_},
            {"captionDisplayBuildMaxMS", buildMaxMS_},
            {"captionDisplaySourceSeconds", sourceSeconds_},
            {"captionDisplayTranslationSeconds", translationSeconds_}};
}

void LiveCaptionDisplay::resetPerfCounters() {
    store_.resetPerfCounters();
    buildSeconds_ = buildMaxMS_ = sourceSeconds_ = translationSeconds_ = 0;
}

} // namespace tessarune
