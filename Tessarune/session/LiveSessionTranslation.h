#pragma once

#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/session/SessionTranslation.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "Tessarune/translation/TranslationObservation.h"
#include "Tessarune/translation/TranslationService.h"

#include <functional>
#include <memory>
#include <span>

namespace tessarune {

/// Joins the translation of captions to the session that owns them. The session is made with
/// `steps()`; then `attach` tells this object which session it was, and from there on the rows, the
/// status texts and the preview of that session are kept up.
///
/// Main queue. The session keeps what it needs of this object alive; this object does not keep the
/// session alive, and what answers late finds nobody.
class LiveSessionTranslation {
  public:
    /// What is named by reference outlives the session and whatever still hangs in the service.
    struct Environment {
        Host& host;
        AppSettings& settings;
        TessaruneFileLogger& logger;
        /// Null where this computer has no translator. The session never downloads by it.
        std::shared_ptr<TranslationService> service;
        /// Drops the observation where no translation log is open.
        std::function<void(const TranslationObservation&)> appendTranslationObservation =
            [](const TranslationObservation&) {};
    };
    explicit LiveSessionTranslation(const Environment& environment);
    LiveSessionTranslation(const LiveSessionTranslation&) = delete;

    /// What the session asks of its translation.
    SessionTranslation steps() const;
    /// Once, before the session begins to listen.
    void attach(const std::shared_ptr<LiveTranscriptStore>& store);

    /// For the user's wishes: another language, a retry, translation on or off.
    LiveTranscriptTranslation& translation() { return *translation_; }

  private:
    /// The session, once there is one and as long as there is.
    struct Session {
        std::weak_ptr<LiveTranscriptStore> store;

        const CaptionCore::Rows& committedSegments() const;
        /// Rows whose translation comes or goes are written to the session's journal too.
        void change(const std::function<void(std::span<CaptionSegment>)>& change) const;
    };

    static LiveTranscriptTranslationAccess access(const std::shared_ptr<Session>& session,
                                                  const Environment& environment);

    const std::shared_ptr<Session> session_;
    const std::shared_ptr<LiveTranscriptTranslation> translation_;
};

} // namespace tessarune
