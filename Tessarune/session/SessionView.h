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

/// How a session ended.
struct SessionOutcome {
    std::optional<UUID> recording;    ///< absent if nothing was recorded
    bool transcriptPersisted = false; ///< nothing to save counts as saved
    bool translationCompleted = false;
    bool heardNothing = false; ///< there was neither sound nor text, so nothing is kept
};

/// What was said, to be read: the lists of the caption engine with all that is known of their rows.
/// They change one after the other within one step of the engine; whoever draws waits for the
/// frame.
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

/// What a session shows of itself. The session writes it; everybody else has it by const reference,
/// reads and observes. Valid as long as the session's store. Main queue.
struct SessionView {
    SessionView(const LiveCaptionDisplayStore& display, const CaptionCore& core,
                const SessionTranslation::View& itsTranslation)
        : captionDisplay(display), captions(LiveCaptions::of(core)), translation(itsTranslation) {}

    /// The frame to draw: captions, previews, status and phase as they belong together.
    const LiveCaptionDisplayStore& captionDisplay;
    /// For what a frame leaves out: failures and times of committed rows, their words, and which
    /// live text is a complete sentence.
    const LiveCaptions captions;
    const SessionTranslation::View& translation;
    /// From the moment at which a start is accepted until a stop is.
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
    Published<std::string> liveHistoryText; ///< all that was said so far, renewed once a second
    Published<double> sessionDuration{0.0}; ///< seconds
    /// The stop no longer waits for translations: rows that have none now may never get one.
    Published<bool> isTranslationOver{false};
    /// How much of the recording has been compressed, 0 to 1; nothing while none is.
    Published<std::optional<double>> audioCompressProgress;
    /// Why the last start failed, for a front end that tells failures apart. Set before the phase.
    std::exception_ptr startFailure;
    /// Of the session before; nothing from a start on, until that session has ended.
    Published<std::optional<SessionOutcome>> outcome;
    /// The last text that was shown as a failure in the live caption line.
    Published<std::string> presentedError;
    /// Assigned whenever a diagnostics run may have begun or ended.
    Published<bool> isDiagnosticsRunning{false};
};

} // namespace tessarune
