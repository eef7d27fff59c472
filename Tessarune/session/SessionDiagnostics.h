#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/display/LiveCaptionDisplayStore.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/speech/AppleFinalReconcileRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerRawResultRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerSummaryRecord.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "Tessarune/translation/TranslationObservation.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/captions/CorrectionObservation.h"
#include "TessaruneCore/captions/SoftCaptionObservation.h"
#include "TessaruneCore/diagnostics/LifecyclePhase.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/recognition/ASREvent.h"
#include "TessaruneCore/replay/CaptionMark.h"

#include <functional>
#include <optional>
#include <string>

namespace tessarune {

struct SessionView;

/// Observes a session for its diagnostics run and for logs of its events. This base class records
/// nothing and never has an open run; an observer overrides the calls that it needs. All calls come
/// on the main queue and must not throw.
class SessionDiagnostics {
  public:
    struct Start {
        AudioSource source;
        std::string sourceName; ///< the name for display
        LiveAudioInactivityAutoStopConfiguration audioInactivityAutoStopConfiguration;
        /// The open text, if the run starts in the middle of a session; empty while a message of
        /// the program is shown.
        std::string openText;
    };
    struct Finish {
        TranscriptSnapshot snapshot;
        PerfStats perfStats;
        std::optional<RecordingMetadata> recording;
    };
    /// The session's state when the last translations have arrived or timed out.
    struct StopSnapshot {
        std::string reason;
        bool completedTranslations = false;
        bool isCommittedTranslating = false;
    };
    /// A line of the run's lifecycle log.
    struct LifecycleEntry {
        double t = 0; ///< seconds since 1970
        std::string name;
        LifecyclePhase phase = LifecyclePhase::instant;
        std::optional<double> elapsedSeconds;
        LogFields fields;
    };
    /// A refresh of the screen. The references are valid during the call.
    struct CaptionDisplayRefresh {
        double t = 0; ///< when it began, seconds since 1970
        const std::string& reason;
        double buildSeconds = 0; ///< without the comparison with the published frame
        LiveCaptionDisplayUpdateResult result;
        const LiveCaptionDisplayStore& display;
        const LiveCaptionDisplayCache& cache;
    };
    /// The data for watching memory and load between two sessions.
    struct IdleWatch {
        std::string reason;
        std::function<LogFields()> snapshotProvider; ///< the program's activity
    };

    virtual ~SessionDiagnostics() = default;

    /// Called once, before all other calls, with the session to observe. The view is valid as long
    /// as the session makes calls.
    virtual void attach(const SessionView&) {}

    // The run

    virtual void startIfNeeded(const Start&) {}
    virtual bool isRunning() const { return false; }
    virtual bool capturesFullDiagnostics() const { return false; }
    /// Called when the session's recording begins, and when another run begins within the session.
    /// Called with `nullopt` when the recording is discarded.
    virtual void noteRecording(const std::optional<RecordingMetadata>&) {}
    virtual void recordLiveCaptionStopSnapshot(const StopSnapshot&) {}
    virtual void finish(const Finish&) {}
    virtual void discardCurrentRun() {}
    virtual void closeLifecycle() {}
    /// The texts have changed since the run was finished.
    virtual void updateFinishedSnapshot(const TranscriptSnapshot&) {}
    /// Whether files of a run are still being written; the logs of an open run do not count.
    virtual bool isWriting() const { return false; }

    // Events; an observer ignores those that it does not log

    virtual void lifecycle(const LifecycleEntry&) {}
    virtual void noteAudioBuffer(double /*sampleRate*/) {}
    virtual void notePerfStats(const PerfStats&) {}
    /// `t` is the time at which the captions process the event.
    virtual void appendASREvent(const ASREvent&, double /*t*/) {}
    /// Another event that a replay of the captions must know, at time `t`.
    virtual void markCaptions(CaptionMark, double /*t*/) {}
    virtual void appendAppleRawResult(const AppleSpeechAnalyzerRawResultRecord&) {}
    virtual void appendAppleSummaryResult(const AppleSpeechAnalyzerSummaryRecord&) {}
    virtual void appendAppleFinalReconcile(const AppleFinalReconcileDecisionRecord&) {}
    virtual void appendBoundary(const BoundaryObservation&) {}
    virtual void appendCorrection(const CorrectionObservation&) {}
    virtual void recordSoftCaption(const SoftCaptionObservation&) {}
    virtual void appendTranslation(const TranslationObservation&) {}
    /// Called many times a second; `shouldRecordDisplayDiagnostics` selects the refreshes that a
    /// run records.
    virtual void captionDisplayRefreshed(const CaptionDisplayRefresh&) {}
    virtual void recordCaptionDisplaySettingChange(const std::string& /*name*/,
                                                   const std::string& /*value*/) {}
    /// An event of the `CaptionFollowDriver`, which keeps the list of captions at its newest line.
    virtual void recordCaptionFollow(const std::string& /*event*/, const LogFields& /*fields*/) {}

    // Between two sessions

    /// Starts the watch. If the run that has just finished is a full one, the watch writes to it.
    virtual void startIdleMemorySentinel(const IdleWatch&) {}
    virtual void stopIdleMemorySentinel(const std::string& /*reason*/) {}
};

} // namespace tessarune
