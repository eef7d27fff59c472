#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune::TranslationPresentationBuilder {

bool hasFailures(std::span<const CaptionSegment> segments) {
    return std::any_of(segments.begin(), segments.end(),
                       [](const auto& segment) { return segment.translationError.has_value(); });
}

bool hasIncomplete(std::span<const CaptionSegment> segments) {
    return std::any_of(segments.begin(), segments.end(),
                       [](const auto& segment) { return !segment.translatedText.has_value(); });
}

std::size_t pendingCount(std::span<const CaptionSegment> segments) {
    return static_cast<std::size_t>(
        std::count_if(segments.begin(), segments.end(), TranslationSegmentMutator::isPending));
}

std::size_t translatedCount(std::span<const CaptionSegment> segments) {
    return static_cast<std::size_t>(
        std::count_if(segments.begin(), segments.end(), [](const auto& segment) {
            return segment.translatedText && !segment.translatedText->empty();
        }));
}

std::vector<std::string> visibleTranslations(std::span<const CaptionSegment> segments,
                                             const std::unordered_set<UUID>& clearedSegmentIDs) {
    std::vector<std::string> visible;
    for (const auto& segment : segments) {
        if (!segment.translatedText || clearedSegmentIDs.contains(segment.id))
            continue;
        const auto text = Text::trimmed(*segment.translatedText);
        if (!text.empty())
            visible.emplace_back(text);
    }
    return visible;
}

std::string visibleGhostText(std::string_view text, bool softTranslationEnabled) {
    return std::string(softTranslationEnabled ? Text::trimmed(text) : std::string_view());
}

std::string flow(const std::vector<std::string>& translations) {
    return Text::joined(translations, " ");
}

bool canRetryFailures(std::span<const CaptionSegment> segments, bool backendCanRun) {
    return backendCanRun && hasFailures(segments);
}

bool canRetryIncomplete(std::span<const CaptionSegment> segments, bool backendCanRun) {
    return backendCanRun && hasIncomplete(segments);
}

bool backendCanRun(std::string_view backend, std::string_view) {
    return TranslationSupport::isAppleBackend(backend);
}

std::optional<RetryBlockedStatus> retryBlockedStatus(bool hasIncomplete, std::string_view backend) {
    using namespace TranslationSupport;
    if (!hasIncomplete)
        return std::nullopt;
    if (isDisabledBackend(backend))
        return RetryBlockedStatus{localized("请先开启 Apple 离线翻译后再补齐译文"),
                                  localized("请先开启 Apple 离线翻译后再补齐译文。")};
    if (isAppleBackend(backend))
        return RetryBlockedStatus{localized(appleOfflineUnsupportedMessage),
                                  localized(appleOfflineUnsupportedSentence)};
    return RetryBlockedStatus{backendNotConnectedMessage(backend),
                              backendNotConnectedSentence(backend)};
}

std::string statusText(std::span<const CaptionSegment> committedSegments,
                       const StatusInput& input) {
    if (TranslationSupport::isDisabledBackend(input.backend))
        return "";
    auto backend = TranslationSupport::backendStatus(input.backend, input.target);
    if (!backend.isRunnable)
        return std::move(backend.detail);
    if (!input.statusMessage.empty())
        return std::string(input.statusMessage);
    if (!input.includeProgress)
        return "";
    if (input.isTranslating)
        return localized("正在翻译…");
    if (const auto pending = pendingCount(committedSegments); pending >= 1)
        return localized("还有 %lld 句等待翻译", {std::to_string(pending)});
    if (input.isGhostTranslating)
        return localized("正在预翻译稳定候选句…");
    if (committedSegments.empty())
        return localized("等待句子稳定后开始翻译");
    if (const auto translated = translatedCount(committedSegments); translated >= 1)
        return localized("已完成 %lld 句翻译", {std::to_string(translated)});
    return localized("等待下一句");
}

bool shouldSurfaceStatusAlongsideOutput(std::span<const CaptionSegment> segments) {
    return hasIncomplete(segments);
}

} // namespace tessarune::TranslationPresentationBuilder
