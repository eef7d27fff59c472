#pragma once

#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/display/LiveCaptionDisplayStore.h"
#include "Tessarune/display/LiveSessionPhase.h"
#include "Tessarune/session/LiveSessionStateMachine.h"
#include "Tessarune/session/SessionStatus.h"
#include "Tessarune/translation/SessionTranslation.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/observation/Published.h"

#include <exception>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// The outcome of a session.
struct SessionOutcome {
    std::optional<UUID> recording;    ///< absent if no recording was kept
    bool transcriptPersisted = false; ///< also true if there was nothing to save
    bool translationCompleted = false;
    bool heardNothing = false; ///< there was neither sound nor text, so nothing is kept
};

/// Read access to the captions: the lists of the caption engine with all data of their rows. A step
/// of the engine changes one list after the other, so views read them only when a frame is
/// published.
struct LiveCaptions {
    const Published<CaptionCore::Rows>& committedSegments;
    const Published<CaptionCore::Rows>& liveLeadingSentences;
    const Published<CaptionCore::Rows>& softCaptionSegments;
    const Published<CaptionSegment>& currentPartial;
    const CaptionCore::WordEvents& wordEvents; ///< of committed rows

    static LiveCaptions of(const CaptionCore& core) {
        return {core.committedSegments, core.liveLeadingSentences, core.softCaptionSegments,
                core.currentPartial, core.wordEvents()};
    }
};

/// The visible state of a session. Only the session writes it; others read and observe it through a
/// const reference. Valid as long as the session's store. Main queue.
struct SessionView {
    SessionView(const LiveCaptionDisplayStore& display, const CaptionCore& core,
                const SessionTranslation::View& itsTranslation)
        : captionDisplay(display), captions(LiveCaptions::of(core)), translation(itsTranslation) {}

    /// The frame to draw: a consistent set of captions, previews, status and phase.
    const LiveCaptionDisplayStore& captionDisplay;
    /// For data that is not in the frame: failures, times and words of committed rows, and which
    /// live text is a complete sentence.
    const LiveCaptions captions;
    const SessionTranslation::View& translation;
    /// True from the acceptance of a start until it fails or a stop is requested.
    Published<bool> isListening{false};
    Published<LiveSessionPhase> sessionPhase{LiveSessionPhase::idle};
    double audioLevel = LiveSessionStateMachine::restingAudioLevel; ///< 0 to 1; views poll it
    Published<SessionStatus> status{SessionStatus{SessionStatus::Kind::idle}};
    Published<bool> isTranslationVisible{false};
    Published<std::string> latestBoundarySummary{"—"};
    Published<std::vector<AudioInputDevices::Device>> inputDevices;
    Published<AudioSource> selectedSource{AudioSource::systemAudio()};
    Published<std::unordered_set<UUID>> clearedSegmentIDs; ///< rows that the user cleared
    Published<bool> hasVisibleSourceTextFlag{false};
    /// The text since the start or the last change of the recogniser; updated about once a second.
    Published<std::string> liveHistoryText;
    Published<double> sessionDuration{0.0}; ///< seconds
    /// Whether another session starts as soon as this one is saved.
    Published<bool> startsAgain{false};
    /// The stop no longer waits for translations: rows may stay untranslated.
    Published<bool> isTranslationOver{false};
    /// The progress of the compression, 0 to 1; `nullopt` if none is running.
    Published<std::optional<double>> audioCompressProgress;
    /// Why the last start failed, for a front end that distinguishes failures. Set before
    /// `sessionPhase` changes.
    std::exception_ptr startFailure;
    /// The outcome of the last session that was stopped; the next start resets it to `nullopt`.
    Published<std::optional<SessionOutcome>> outcome;
    /// The last error text shown in the live caption line; the next start empties it.
    Published<std::string> presentedError;
    /// Assigned whenever a diagnostics run may have begun or ended.
    Published<bool> isDiagnosticsRunning{false};
};

} // namespace tessarune
