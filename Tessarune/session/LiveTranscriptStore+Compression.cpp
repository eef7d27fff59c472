#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

// What the compressor makes.
constexpr std::int64_t targetSampleRate = 16000;
constexpr std::int64_t targetChannelCount = 1;
constexpr std::int64_t targetBitRate = 32000;

constexpr const char* stepName = "listen.stop.audioCompress";

} // namespace

void LiveTranscriptStore::skipCompression(const char* reason, LogFields fields) {
    fields.add("reason", reason);
    log("listen.stop.audioCompress.skipped", fields);
    fields.add("skipped", true);
    recordLifecycle(stepName, Phase::instant, fields);
}

Task<void> LiveTranscriptStore::compressStoppedRecordingIfNeeded(Self self) {
    // 1.
    if (*self->environment_.settings.recordLosslessAudio) {
        self->skipCompression("recordLosslessAudio");
        co_return;
    }
    // 2.
    const auto recording = self->recordingTracker_.currentRecordingMetadata();
    if (!recording) {
        self->skipCompression("missingRecording");
        co_return;
    }
    // 3.
    if (!recording->filePath.ends_with(".wav")) {
        self->skipCompression("notWAV", {{"recordingID", recording->id.text()},
                                         {"sourcePath", recording->filePath},
                                         {"audioFormat", recording->audioFormat.value_or("")}});
        co_return;
    }
    // 4.
    const LogFields fields{
        {"recordingID", recording->id.text()},     {"sourcePath", recording->filePath},
        {"sourceByteCount", recording->byteCount}, {"targetFormat", "m4a/aac"},
        {"targetSampleRate", targetSampleRate},    {"targetChannelCount", targetChannelCount},
        {"targetBitRate", targetBitRate}};
    self->statusMessage = localized("正在压缩录音为 M4A…");
    self->refreshCaptionDisplay("listen.stop.audioCompress.start");
    self->log("listen.stop.audioCompress.start", fields);
    const Step step = self->beginStep(stepName, fields);
    self->audioCompressProgress = 0.0;
    // 5.
    std::string error;
    std::optional<RecordingMetadata> result;
    try {
        Task<RecordingMetadata> compressing = self->environment_.compressor.compressWAVToM4A(
            *recording, true, self->compressProgressOnMain());
        result = co_await compressing;
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    self->audioCompressProgress = std::optional<double>();
    if (result) {
        self->reportCompressed(*recording, *result, step);
    } else {
        self->reportCompressFailure(*recording, error, step);
    }
}

MediaProgress LiveTranscriptStore::compressProgressOnMain() {
    return [weak = weak_from_this(), &main = host()](double fraction) {
        main.post([weak, fraction] {
            const Self self = weak.lock();
            if (self && self->audioCompressProgress->has_value())
                self->audioCompressProgress = fraction;
        });
    };
}

void LiveTranscriptStore::reportCompressed(const RecordingMetadata& source,
                                           const RecordingMetadata& result, const Step& step) {
    // 6.
    statusMessage = localized("录音已压缩为 M4A");
    refreshCaptionDisplay("listen.stop.audioCompress.done");
    LogFields fields{{"recordingID", result.id.text()},
                     {"destinationPath", result.filePath},
                     {"sourceByteCount", source.byteCount},
                     {"destinationByteCount", result.byteCount},
                     {"audioFormat", result.audioFormat.value_or("")},
                     {"sampleRate", result.sampleRate.value_or(targetSampleRate)},
                     {"channelCount", result.channelCount.value_or(targetChannelCount)},
                     {"targetBitRate", targetBitRate}};
    finishStep(step, fields);
    log("listen.stop.audioCompress.done", fields.add(elapsed(step.startedAt)));
}

void LiveTranscriptStore::reportCompressFailure(const RecordingMetadata& source,
                                                const std::string& error, const Step& step) {
    // 7.
    statusMessage = localized("录音压缩失败，已保留 WAV");
    refreshCaptionDisplay("listen.stop.audioCompress.failed");
    recordLifecycle(step.name, Phase::failure,
                    {{"recordingID", source.id.text()}, {"failed", true}, {"error", error}},
                    now() - step.startedAt);
    LogFields fields = elapsed(step.startedAt);
    fields.add("recordingID", source.id.text())
        .add("sourcePath", source.filePath)
        .add("error", error);
    log("listen.stop.audioCompress.failed", fields, Importance::important);
}

} // namespace tessarune
