#pragma once

#include "Terminal/CaptionOutput.h"
#include "Tessarune/app/Application.h"
#include "Tessarune/session/SessionView.h"

#include <functional>
#include <optional>
#include <set>
#include <string>

namespace tessarune {

/// Reports the events of a session to a terminal's output: captions, translations, status texts and
/// progress. Main queue. The references must outlive this object. The session must have ended when
/// the object is destroyed.
class SessionNews {
  public:
    struct Handlers {
        std::function<void()> onChange;              ///< there may be something new to print
        std::function<void(const std::string&)> say; ///< prints a message to the user
        std::function<void(const std::string&)> progress;
        std::function<void(LiveSessionPhase)> onPhase;
    };
    /// `target` is the target language; empty: none.
    SessionNews(const SessionView& session, std::string target, bool isRecorded, Handlers handlers);
    SessionNews(const SessionNews&) = delete;

    /// Changes the target language; empty: none.
    void setTarget(std::string target) { target_ = std::move(target); }

    CaptionPicture picture() const;
    /// Call after the session: reports where to find the recording. Returns false if words of a
    /// session that should be recorded are not saved.
    bool reportSaved(RecordingCatalog& catalog, FileSystem& files) const;

  private:
    void observeStatus();
    bool reportsStatus() const;
    std::string unsavedText(const SessionOutcome& outcome, const RecordingCatalog& catalog) const;
    void reportRecording(const SessionOutcome& outcome, RecordingCatalog& catalog,
                         FileSystem& files) const;
    void reportTranslationStatus(const std::string& text);

    const SessionView& view_;
    std::string target_;
    const bool isRecorded_;
    const Handlers handlers_;
    std::string lastStatus_; ///< other than of the translation
    std::string lastTranslationStatus_;
    bool failedToCompress_ = false;
    std::optional<int> lastProgress_;
    std::set<std::string> reportedTranslationStatus_; ///< texts, with the numbers in them removed
};

} // namespace tessarune
