#pragma once

#include "Terminal/CaptionOutput.h"
#include "Tessarune/app/Application.h"
#include "Tessarune/session/SessionView.h"

#include <functional>
#include <optional>
#include <set>
#include <string>

namespace tessarune {

/// What happens in a session, told to the output of a terminal: captions, translations, status
/// texts and progress. Main queue; all that it is given outlives it, and the session ends first.
class SessionNews {
  public:
    struct Handlers {
        std::function<void()> onChange; ///< there may be something new to print
        /// A word to the user.
        std::function<void(const std::string&)> say;
        std::function<void(const std::string&)> progress;
        std::function<void(LiveSessionPhase)> onPhase;
    };
    /// `target` is the language that is translated into; empty: none.
    SessionNews(const SessionView& session, std::string target, bool isRecorded, Handlers handlers);
    SessionNews(const SessionNews&) = delete;

    /// Another language is translated into from now on; empty: none.
    void setTarget(std::string target) { target_ = std::move(target); }

    CaptionPicture picture() const;
    /// After the session: where what was recorded can be found.
    void tellSaved(RecordingCatalog& catalog, FileSystem& files) const;

  private:
    void observeStatus();
    bool isWorthTelling() const;
    void tellTranslationStatus(const std::string& text);

    const SessionView& view_;
    std::string target_;
    const bool isRecorded_;
    const Handlers handlers_;
    std::string lastStatus_;
    bool failedToCompress_ = false;
    std::optional<int> lastProgress_;
    std::set<std::string> toldTranslationStatus_;
};

} // namespace tessarune
