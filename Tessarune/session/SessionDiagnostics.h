#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/speech/AppleFinalReconcileRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerRawResultRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerSummaryRecord.h"
#include "Tessarune/speech/AudioTranscriber.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/captions/CorrectionObservation.h"
#include "TessaruneCore/captions/SoftCaptionObservation.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/recognition/ASREvent.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// What a session tells the diagnostics run that it may leave behind, each step a function. As it
/// is made, no run is ever open. Called on the main queue; nothing may throw.
struct SessionDiagnostics {
    struct Start {
        AudioSource source;
        std::string sourceName; ///< as a person calls it
        LiveAudioInactivityAutoStopConfiguration audioInactivityAutoStopConfiguration;
    };
    struct Finish {
        TranscriptSnapshot snapshot;
        PerfStats perfStats;
        std::optional<RecordingMetadata> recording;
    };
    /// A line of the run's lifecycle log.
    struct LifecycleEntry {
        enum class Phase { instant, start, finish, failure };
        double t = 0; ///< seconds since 1970
        std::string name;
        Phase phase = Phase::instant;
        std::optional<double> elapsedSeconds;
        LogFields fields;
    };

    // The run
    std::function<void(const Start&)> startIfNeeded = [](const Start&) {};
    std::function<bool()> isRunning = [] { return false; };
    std::function<bool()> capturesFullDiagnostics = [] { return false; };
    std::function<std::optional<std::filesystem::path>()> runDirectory =
        []() -> std::optional<std::filesystem::path> { return std::nullopt; };
    std::function<void(const LogFields&)> setStopRequestFields = [](const LogFields&) {};
    std::function<void(const std::string& reason, bool completedTranslations)>
        recordLiveCaptionStopSnapshot = [](const std::string&, bool) {};
    std::function<void(const Finish&)> finish = [](const Finish&) {};
    std::function<void()> discardCurrentRun = [] {};
    std::function<void()> closeLifecycle = [] {};
    /// The texts have changed since the run was finished.
    std::function<void(const TranscriptSnapshot&)> updateFinishedSnapshot =
        [](const TranscriptSnapshot&) {};

    // Its logs; each drops what it gets where the log is not open
    std::function<void(const LifecycleEntry&)> lifecycle = [](const LifecycleEntry&) {};
    std::function<void(double sampleRate)> noteAudioBuffer = [](double) {};
    std::function<void(const PerfStats&)> notePerfStats = [](const PerfStats&) {};
    std::function<void(const ASREvent&)> appendASREvent = [](const ASREvent&) {};
    std::function<void(const AppleSpeechAnalyzerRawResultRecord&)> appendAppleRawResult =
        [](const AppleSpeechAnalyzerRawResultRecord&) {};
    std::function<void(const AppleSpeechAnalyzerSummaryRecord&)> appendAppleSummaryResult =
        [](const AppleSpeechAnalyzerSummaryRecord&) {};
    std::function<void(const AppleFinalReconcileDecisionRecord&)> appendAppleFinalReconcile =
        [](const AppleFinalReconcileDecisionRecord&) {};
    std::function<void(const BoundaryObservation&)> appendBoundary =
        [](const BoundaryObservation&) {};
    std::function<void(const CorrectionObservation&)> appendCorrection =
        [](const CorrectionObservation&) {};
    std::function<void(const SoftCaptionObservation&)> recordSoftCaption =
        [](const SoftCaptionObservation&) {};

    // The watch over memory and load between two sessions
    struct IdleWatch {
        std::optional<std::filesystem::path> runDirectory;
        std::string reason;
        std::function<LogFields()> snapshotProvider; ///< what the program is doing
    };
    std::function<void(const IdleWatch&)> startIdleMemorySentinel = [](const IdleWatch&) {};
    std::function<void(const std::string& reason)> stopIdleMemorySentinel = [](const std::string&) {
    };
};

} // namespace tessarune
