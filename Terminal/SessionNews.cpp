#include "Terminal/SessionNews.h"

#include "Terminal/CommandOutput.h"
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
        // The text of this status says that the WAV was kept. That is known only after saving, so
        // `reportSaved` reports it.
        if (status.kind == SessionStatus::Kind::compressionFailed) {
            failedToCompress_ = true;
            return;
        }
        const std::string text = status.text();
        // The next caption clears the status, so the same text is news when it comes again. The
        // translation's is not: the session sets it again with each change of the settings.
        const bool isOfTranslation = status.kind == SessionStatus::Kind::translation;
        std::string& last = isOfTranslation ? lastTranslationStatus_ : lastStatus_;
        const bool isNews = std::exchange(last, text) != text;
        if (isNews && !text.empty() && reportsStatus())
            handlers_.say(text);
    });
    // A failed start is not reported here: the whole run then fails and reports the reason.
    view_.presentedError.onDidChange([this](const std::string& text) {
        if (*view_.isListening)
            handlers_.say(text);
    });
    view_.audioCompressProgress.onDidChange([this](const std::optional<double>& done) {
        if (!done)
            return;
        const int percent = static_cast<int>(*done * 100);
        if (std::exchange(lastProgress_, percent) != percent)
            handlers_.progress(percentText(percent));
    });
}

/// Whether status texts are reported in the current phase. Before `listening` they are not, because
/// the command itself reports what it listens to. During the stop they are about saving, so they
/// are reported only if the session is recorded.
bool SessionNews::reportsStatus() const {
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
    if (!outcome->transcriptPersisted)
        handlers_.say(unsavedText(*outcome, catalog));
    if (outcome->heardNothing)
        handlers_.say(localized("There was no sound, so the session was not saved."));
    if (!outcome->recording)
        return !isRecorded_ || view_.captions.committedSegments->empty();
    reportRecording(*outcome, catalog, files);
    return outcome->transcriptPersisted;
}

/// Why the transcript could not be saved.
std::string SessionNews::unsavedText(const SessionOutcome& outcome,
                                     const RecordingCatalog& catalog) const {
    const auto readOnlyFolder =
        outcome.recording ? DiskFailure::readOnlyFolderOf(catalog.transcriptURL(*outcome.recording))
                          : std::filesystem::path();
    if (readOnlyFolder.empty())
        return view_.status->text(); // the session's own text about the failure
    return localized("The transcript could not be saved: the folder %@ is read-only.",
                     {readOnlyFolder.string()});
}

/// Reports where to find the session's recording, or why the history does not list it.
void SessionNews::reportRecording(const SessionOutcome& outcome, RecordingCatalog& catalog,
                                  FileSystem& files) const {
    const std::string id = shortID(*outcome.recording);
    const auto listed = HistoryItemLoader::load(catalog, files);
    const auto item = std::ranges::find(listed, *outcome.recording, &HistoryItem::id);
    if (item != listed.end()) {
        if (failedToCompress_)
            handlers_.say(SessionStatus{SessionStatus::Kind::compressionFailed}.text());
        handlers_.say(
            localized(outcome.transcriptPersisted
                          ? "Saved: --show %@  (%@)"
                          : "Only the sound was saved, not the transcript: --show %@  (%@)",
                      {id, item->filePath.value_or("")}));
        return;
    }
    const auto unlisted = catalog.recording(*outcome.recording);
    if (unlisted && files.exists(unlisted->filePath))
        handlers_.say(localized("The session was too short to be saved."));
    else if (unlisted)
        handlers_.say(localized("The sound of the session is lost. Its transcript can be printed "
                                "with --show %@ until the next session begins.",
                                {id}));
}

void SessionNews::reportTranslationStatus(const std::string& text) {
    // The loading of a model is not reported. Texts that differ only in their numbers are reported
    // once in a session.
    if (text.empty() || view_.translation.translationPreparationDisplayState->preparing)
        return;
    std::string withoutNumbers;
    for (const char32_t codePoint : Text::codePoints(text)) {
        const bool isNumber = Text::isLetterOrNumber(codePoint) && !Text::isLetter(codePoint);
        if (!isNumber)
            Text::append(withoutNumbers, codePoint);
    }
    if (reportedTranslationStatus_.insert(withoutNumbers).second)
        handlers_.say(translationFailureText(text, target_));
}

} // namespace tessarune
