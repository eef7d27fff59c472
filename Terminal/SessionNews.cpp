#include "Terminal/SessionNews.h"

#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <utility>

namespace tessarune {

SessionNews::SessionNews(const SessionView& session, std::string target, bool isRecorded,
                         Handlers handlers)
    : view_(session),
      target_(std::move(target)),
      isRecorded_(isRecorded),
      handlers_(std::move(handlers)) {
    view_.captionDisplay.frame.onDidChange([this](const auto&) { handlers_.onChange(); });
    view_.isTranslationOver.onDidChange([this](bool) { handlers_.onChange(); });
    view_.sessionPhase.onDidChange(handlers_.onPhase);
    view_.translation.translationStatusMessage.onDidChange(
        [this](const std::string& text) { reportTranslationStatus(text); });
    observeStatus();
}

CaptionPicture SessionNews::picture() const {
    return {*view_.captionDisplay.frame, view_.captions, target_,
            !target_.empty() && !*view_.isTranslationOver};
}

void SessionNews::observeStatus() {
    view_.status.onDidChange([this](const SessionStatus& status) {
        // Reported later: only after saving is it known whether the WAV was kept.
        if (status.kind == SessionStatus::Kind::compressionFailed) {
            failedToCompress_ = true;
            return;
        }
        const std::string text = status.text();
        const bool isNews = std::exchange(lastStatus_, text) != text;
        if (isNews && !text.empty() && isReported())
            handlers_.say(text);
    });
    view_.presentedError.onDidChange([this](const std::string& text) {
        if (*view_.isListening)
            handlers_.say(text);
    });
    view_.audioCompressProgress.onDidChange([this](const std::optional<double>& done) {
        const auto percent =
            done ? std::optional(static_cast<int>(*done * 100)) : std::optional<int>();
        if (percent && std::exchange(lastProgress_, percent) != percent)
            handlers_.progress(std::to_string(*percent) + " %");
    });
}

/// Whether status texts of the current phase are reported. At the start the run itself reports what
/// it listens to; at the stop an unrecorded session has nothing to save.
bool SessionNews::isReported() const {
    switch (*view_.sessionPhase) {
    case LiveSessionPhase::listening:
    case LiveSessionPhase::failed:
        return true;
    case LiveSessionPhase::stopping:
        return isRecorded_;
    case LiveSessionPhase::idle:
    case LiveSessionPhase::preparing:
    case LiveSessionPhase::loading:
        break;
    }
    return false;
}

bool SessionNews::reportSaved(RecordingCatalog& catalog, FileSystem& files) const {
    const auto& outcome = *view_.outcome;
    if (!outcome)
        return true;
    const bool isTranscriptSaved = outcome->transcriptPersisted;
    const auto& saved = outcome->recording;
    const auto readOnly = saved ? DiskFailure::readOnlyFolderOf(catalog.transcriptURL(*saved))
                                : std::filesystem::path();
    if (!isTranscriptSaved)
        handlers_.say(readOnly.empty() ? view_.status->text()
                                       : localized("The transcript could not be saved: the folder "
                                                   "%@ is read-only.",
                                                   {readOnly.string()}));
    if (outcome->heardNothing)
        handlers_.say(localized("There was no sound; nothing is kept of the session."));
    if (!saved)
        return !isRecorded_ || view_.captions.committedSegments->empty();
    const auto listed = HistoryItemLoader::load(catalog, files);
    const auto item = std::ranges::find(listed, *saved, &HistoryItem::id);
    if (item != listed.end() && failedToCompress_)
        handlers_.say(SessionStatus{SessionStatus::Kind::compressionFailed}.text());
    if (item != listed.end())
        handlers_.say(localized(isTranscriptSaved ? "Saved: --show %@  (%@)"
                                                  : "Only the sound is kept: --show %@  (%@)",
                                {saved->text().substr(0, 8), item->filePath.value_or("")}));
    else if (const auto unlisted = catalog.recording(*saved);
             unlisted && !files.exists(unlisted->filePath))
        handlers_.say(localized("The sound of the session is gone. Until the next session begins, "
                                "--show %@ prints its transcript.",
                                {saved->text().substr(0, 8)}));
    else if (unlisted)
        handlers_.say(localized("The session was too short to be kept."));
    return isTranscriptSaved;
}

void SessionNews::reportTranslationStatus(const std::string& text) {
    // The loading of a model is not reported. Of several texts that differ only in a number, only
    // the first one is.
    if (text.empty() || view_.translation.translationPreparationDisplayState->preparing)
        return;
    std::string kind;
    for (const char32_t codePoint : Text::codePoints(text)) {
        if (!Text::isLetterOrNumber(codePoint) || Text::isLetter(codePoint))
            Text::append(kind, codePoint);
    }
    if (reportedTranslationStatus_.insert(kind).second)
        handlers_.say(translationFailureText(text, target_));
}

} // namespace tessarune
