#include "Tessarune/session/LiveTranscriptStore.h"

namespace tessarune {

namespace {

constexpr const char* compressionStep = "listen.stop.audioCompress";
constexpr std::int64_t compressedSampleRate = M4A::sampleRate;
constexpr std::int64_t compressedChannelCount = M4A::channels;
constexpr std::int64_t compressedBitRate = M4A::bitRate;

} // namespace

void LiveSessionStop::skipCompression(const char* reason, LogFields fields) {
    fields.add("reason", reason);
    log().event("listen.stop.audioCompress.skipped", fields);
    fields.add("skipped", true);
    log().instant(compressionStep, fields);
}

Task<void> LiveSessionStop::compressRecordingIfNeeded(Store store) {
    if (*store->environment_.settings.recordLosslessAudio) {
        if (const auto& id = store->recordingTracker_.currentID())
            store->environment_.catalog.markForCompression(false, *id);
        skipCompression("recordLosslessAudio");
        co_return;
    }
    const auto recording = store->recordingTracker_.currentRecordingMetadata();
    if (!recording) {
        skipCompression("missingRecording");
        co_return;
    }
    if (!recording->filePath.ends_with(".wav")) {
        skipCompression("notWAV", {{"recordingID", recording->id.text()},
                                   {"sourcePath", recording->filePath},
                                   {"audioFormat", recording->audioFormat.value_or("")}});
        co_return;
    }
    const LogFields fields{
        {"recordingID", recording->id.text()},      {"sourcePath", recording->filePath},
        {"sourceByteCount", recording->byteCount},  {"targetFormat", "m4a/aac"},
        {"targetSampleRate", compressedSampleRate}, {"targetChannelCount", compressedChannelCount},
        {"targetBitRate", compressedBitRate}};
    store->view_.status = SessionStatus{SessionStatus::Kind::compressing};
    store->refreshCaptionDisplay("listen.stop.audioCompress.start");
    log().event("listen.stop.audioCompress.start", fields);
    const Step step = log().begin(compressionStep, fields);
    store->view_.audioCompressProgress = 0.0;
    const MediaProgress progress = [weak = store->weak_from_this(),
                                    &main = store->host()](double fraction) {
        main.post([weak, fraction] {
            const Store alive = weak.lock();
            if (alive && alive->view_.audioCompressProgress->has_value())
                alive->view_.audioCompressProgress = fraction;
        });
    };
    std::string error;
    bool isTooShort = false;
    std::optional<RecordingMetadata> result;
    try {
        Task<RecordingMetadata> compressing =
            store->environment_.compressor.compressWAVToM4A(*recording, true, progress);
        result = co_await compressing;
    } catch (const RecordingAudioCompressor::CompressionError& failure) {
        isTooShort =
            failure.kind() == RecordingAudioCompressor::CompressionError::Kind::emptyOutput;
        error = failure.what();
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    store->view_.audioCompressProgress = std::optional<double>();
    if (isTooShort) {
        store->view_.status = SessionStatus();
        log().finish(step, {{"recordingID", recording->id.text()}, {"reason", "tooShort"}});
        skipCompression("tooShort", {{"recordingID", recording->id.text()}});
    } else if (result) {
        reportCompressed(*recording, *result, step);
    } else {
        reportCompressFailure(*recording, error, step);
    }
}

void LiveSessionStop::reportCompressed(const RecordingMetadata& source,
                                       const RecordingMetadata& result, const Step& step) {
    store_.view_.status = SessionStatus{SessionStatus::Kind::compressed};
    store_.refreshCaptionDisplay("listen.stop.audioCompress.done");
    LogFields fields{{"recordingID", result.id.text()},
                     {"destinationPath", result.filePath},
                     {"sourceByteCount", source.byteCount},
                     {"destinationByteCount", result.byteCount},
                     {"audioFormat", result.audioFormat.value_or("")},
                     {"sampleRate", result.sampleRate.value_or(compressedSampleRate)},
                     {"channelCount", result.channelCount.value_or(compressedChannelCount)},
                     {"targetBitRate", compressedBitRate}};
    log().finish(step, fields);
    log().event("listen.stop.audioCompress.done", fields.add(log().elapsed(step.startedAt)));
}

void LiveSessionStop::reportCompressFailure(const RecordingMetadata& source,
                                            const std::string& error, const Step& step) {
    if (store_.environment_.catalog.wasDeleted(source.id)) {
        store_.view_.status = SessionStatus();
        // No log may name a deleted recording.
        return log().finish(step, {{"reason", "recordingDeleted"}});
    }
    store_.view_.status = SessionStatus{SessionStatus::Kind::compressionFailed};
    store_.refreshCaptionDisplay("listen.stop.audioCompress.failed");
    log().fail(step, {{"recordingID", source.id.text()}, {"failed", true}, {"error", error}});
    LogFields fields = log().elapsed(step.startedAt);
    fields.add("recordingID", source.id.text())
        .add("sourcePath", source.filePath)
        .add("error", error);
    log().event("listen.stop.audioCompress.failed", fields, Importance::important);
}

} // namespace tessarune
