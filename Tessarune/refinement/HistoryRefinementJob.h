#pragma once

#include "Tessarune/refinement/HistoryRefinementService.h"
#include "TessaruneCore/host/OneShot.h"

#include <exception>
#include <memory>
#include <stop_token>
#include <string>
#include <utility>

namespace tessarune {

/// Thrown if the recording was deleted.
struct RecordingDeleted : std::exception {};

/// A request and its state on the way through the service. Main queue; the worker also uses
/// `request` and `result`, but only while the job's task waits for it.
struct HistoryRefinementService::Job {
    using Observer = HistoryRefinementObserver;

    Job(Host& host, HistoryRefinementRequest itsRequest, std::string itsModel)
        : request(std::move(itsRequest)), model(std::move(itsModel)), done(Executor::main(host)) {}

    HistoryRefinementRequest request;
    std::string model;
    std::stop_source stop; ///< requested by the user or at the end of the program
    OneShot<HistoryRefinementOutcome> done;
    DataFolderLease dataFolder;
    bool isMarked = false; ///< see RecordingCatalog::markTranscription

    double startedAt = 0; ///< host time when the job left the queue
    std::shared_ptr<Observer> observer;
    SpeechAnalyzerFileTranscriptionResult result;
    HistoryRefinementOutcome outcome;

    LogFields recording() const { return {{"recordingID", request.recordingID.text()}}; }
    /// Reports an event of the job to its observer; an event with a status is a finish.
    void note(const std::string& name, const LogFields& fields,
              std::optional<Observer::Status> status = {}) const {
        const auto phase = status ? LifecyclePhase::finish : LifecyclePhase::instant;
        if (observer)
            observer->lifecycle({name, phase, fields, status, std::nullopt});
    }
};

} // namespace tessarune
