#include "Tessarune/history/RecordingAudioCompressor.h"

#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/history/WAVEncoding.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <cmath>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

using CompressionError = RecordingAudioCompressor::CompressionError;

std::string description(CompressionError::Kind kind, const std::string& path) {
    switch (kind) {
    case CompressionError::Kind::missingSource:
        return localized("找不到待压缩录音：%@", {path});
    case CompressionError::Kind::missingOutput:
        return localized("压缩完成但找不到 M4A 文件：%@", {path});
    case CompressionError::Kind::missingOutputSize:
        return localized("无法读取 M4A 文件大小：%@", {path});
    case CompressionError::Kind::emptyOutput:
        return path + ": too short";
    }
    return path;
}

std::filesystem::path destinationOf(const std::filesystem::path& source) {
    std::filesystem::path destination = source;
    if (source.extension() == ".wav")
        return destination.replace_extension("m4a");
    return destination += ".m4a";
}

} // namespace

RecordingAudioCompressor::CompressionError::CompressionError(Kind kind, const std::string& path)
    : std::runtime_error(description(kind, path)), kind_(kind) {}

RecordingAudioCompressor::RecordingAudioCompressor(Host& host, FileSystem& files,
                                                   RecordingCatalog& catalog,
                                                   TessaruneFileLogger& logger,
                                                   AudioExporter& exporter, OpenMediaFile open,
                                                   CreateM4A create)
    : host_(host),
      files_(files),
      catalog_(catalog),
      logger_(logger),
      exporter_(exporter),
      open_(std::move(open)),
      create_(std::move(create)),
      queue_(host.serialQueue("Tessarune.audio.backgroundEncoder", QueuePriority::utility)) {}

RecordingAudioCompressor::~RecordingAudioCompressor() {
    endLeftover(); // a regular end must not count as a crash
}

// While a session records

void RecordingAudioCompressor::follow(const RecordingMetadata& recording) {
    forget();
    catalog_.markForCompression(true, recording.id);
    followed_ = std::make_shared<WAVEncoding>(files_, create_, recording.filePath,
                                              destinationOf(recording.filePath));
    spawn(Executor::main(host_), keepUp(alive_, *this, followed_));
}

void RecordingAudioCompressor::forget() {
    if (const auto encoding = std::exchange(followed_, nullptr))
        queue_->async([encoding] { encoding->abandon(); });
}

Task<void> RecordingAudioCompressor::keepUp(Alive alive, RecordingAudioCompressor& self,
                                            std::shared_ptr<WAVEncoding> encoding) {
    // The limit for one step: after the computer was suspended, the WAV may have grown by hours of
    // silence.
    constexpr double maximumSeconds = 600;
    Host& host = self.host_;
    const Executor worker = Executor::queue(host, self.queue_);
    for (;;) {
        co_await sleep(Executor::main(host), followSeconds);
        if (alive.expired() || self.followed_ != encoding)
            co_return;
        co_await runOn(worker, [&] { encoding->follow(maximumSeconds); });
    }
}

/// Finishes the M4A that `follow` began. False if the entire WAV must still be encoded.
Task<bool> RecordingAudioCompressor::finishFollowed(RecordingMetadata recording,
                                                    MediaProgress progress, std::stop_token stop) {
    const auto encoding = std::exchange(followed_, nullptr);
    if (!encoding)
        co_return false;
    const Executor worker = Executor::queue(host_, queue_);
    if (encoding->source() != recording.filePath) {
        co_await runOn(worker, [&] { encoding->abandon(); });
        co_return false;
    }
    const bool isDone = co_await runOn(worker, [&] { return encoding->finish(progress, stop); });
    if (!isDone)
        logBackgroundFailure(recording, encoding->failure());
    co_return isDone;
}

// Recordings of earlier sessions

void RecordingAudioCompressor::compressLeftovers(DataFolderHold hold) {
    std::vector<RecordingMetadata> waiting;
    for (const RecordingMetadata& recording : catalog_.recordings()) {
        if (recording.awaitsCompression != true || !recording.endedAt ||
            !recording.filePath.ends_with(".wav") || !files_.exists(recording.filePath))
            continue;
        if (catalog_.compressionAttempts(recording.id) < mostAttempts)
            waiting.push_back(recording);
        else
            logger_.important(
                "audio.compress.background.skipped",
                {{"recordingID", recording.id.text()}, {"sourcePath", recording.filePath}});
    }
    if (!waiting.empty())
        spawn(Executor::main(host_),
              encodeLeftovers(alive_, *this, std::move(waiting), std::move(hold)));
}

Task<void> RecordingAudioCompressor::encodeLeftovers(Alive alive, RecordingAudioCompressor& self,
                                                     std::vector<RecordingMetadata> recordings,
                                                     DataFolderHold hold) {
    const DataFolderHold keptToTheEnd = std::move(hold);
    Host& host = self.host_;
    const Executor worker = Executor::queue(host, self.queue_);
    for (const RecordingMetadata& recording : recordings) {
        if (!self.beginLeftover(recording.id))
            continue;
        WAVEncoding encoding(self.files_, self.create_, recording.filePath,
                             destinationOf(recording.filePath));
        bool isDone = false;
        while (!isDone && encoding.failure().empty()) {
            co_await sleep(Executor::main(host), 1);
            if (alive.expired())
                co_return;
            isDone = co_await runOn(worker, [&] {
                return encoding.advance(leftoverSecondsASecond) && encoding.finish();
            });
            if (alive.expired())
                co_return;
        }
        std::string error = encoding.failure();
        try {
            if (isDone)
                self.adopt(recording, true);
        } catch (const std::exception& failure) {
            error = failure.what();
        }
        self.endLeftover();
        if (!error.empty())
            self.logBackgroundFailure(recording, error);
    }
}

/// Saves the increased number of attempts before the encoder reads the file, because a file that
/// crashes the program must not do so at each launch. False if the number could not be saved.
bool RecordingAudioCompressor::beginLeftover(const UUID& recording) {
    const std::size_t attempts = catalog_.compressionAttempts(recording);
    if (!catalog_.setCompressionAttempts(attempts + 1, recording))
        return false;
    leftover_ = recording;
    return true;
}

void RecordingAudioCompressor::endLeftover() {
    if (leftover_)
        catalog_.setCompressionAttempts(0, *leftover_);
    leftover_.reset();
}

void RecordingAudioCompressor::logBackgroundFailure(const RecordingMetadata& recording,
                                                    const std::string& error) {
    if (catalog_.wasDeleted(recording.id))
        return; // its sound was deleted as well, and no log may name the recording
    logger_.important("audio.compress.background.failed", {{"recordingID", recording.id.text()},
                                                           {"sourcePath", recording.filePath},
                                                           {"error", error}});
}

// At the end of a session

Task<RecordingMetadata> RecordingAudioCompressor::compressWAVToM4A(RecordingMetadata recording,
                                                                   bool deleteSource,
                                                                   MediaProgress progress,
                                                                   std::stop_token stop) {
    const std::filesystem::path source(recording.filePath);
    if (!files_.exists(source))
        throw CompressionError(CompressionError::Kind::missingSource, source.string());
    Task<bool> finishing = finishFollowed(recording, progress, stop);
    const bool isEncoded = co_await finishing;
    if (!isEncoded) {
        if (deleteSource) // the program may end before the encoding does
            catalog_.markForCompression(true, recording.id);
        Task<void> transcoding =
            exporter_.transcodeToM4A(source, destinationOf(source), std::move(progress), stop);
        co_await transcoding;
    }
    co_return adopt(std::move(recording), deleteSource);
}

/// Makes the finished M4A the recording's audio. Throws if the M4A is not an equivalent replacement
/// or the entry cannot be saved.
RecordingMetadata RecordingAudioCompressor::adopt(RecordingMetadata recording, bool deleteSource) {
    const std::filesystem::path source(recording.filePath);
    const auto destination = destinationOf(source);
    recording.byteCount = checkedSize(recording, destination);
    recording.filePath = destination.string();
    recording.audioFormat = M4A::audioFormat;
    recording.sampleRate = M4A::sampleRate;
    recording.channelCount = M4A::channels;
    recording.awaitsCompression = false;
    recording.note.reset(); // keeps the stored note, which may be newer
    // A failed update may nevertheless have written the new entry. If the M4A of that entry were
    // missing, the next launch would drop the recording from the list. So the M4A is removed only
    // if the recording was deleted or its entry surely names another file; otherwise WAV and M4A
    // stay.
    if (!catalog_.upsert(recording)) {
        const std::string why =
            catalog_.paths().recordingIndex().string() + " could not be brought up to date";
        const auto stored = catalog_.recording(recording.id);
        if (catalog_.wasDeleted(recording.id) || (stored && stored->filePath != recording.filePath))
            discard(destination, why);
        throw AudioExporter::ExportError(AudioExporter::ExportError::Kind::exportFailed, why);
    }
    if (deleteSource)
        removeSource(recording, source, destination);
    recording.awaitsCompression.reset();
    return recording;
}

std::int64_t RecordingAudioCompressor::checkedSize(const RecordingMetadata& recording,
                                                   const std::filesystem::path& output) {
    if (!files_.exists(output))
        throw CompressionError(CompressionError::Kind::missingOutput, output.string());
    std::uint64_t size = 0;
    try {
        size = files_.size(output);
    } catch (const std::system_error&) {
        throw CompressionError(CompressionError::Kind::missingOutputSize, output.string());
    }
    if (!lastsAsLong(recording, output))
        discard(output, output.string() + " is not as long as the recording");
    if (size <= HistoryItemLoader::emptyCompressedSize) {
        removeOutput(output);
        catalog_.markForCompression(false, recording.id);
        throw CompressionError(CompressionError::Kind::emptyOutput, output.string());
    }
    return static_cast<std::int64_t>(size);
}

/// The M4A is about to become the only copy of the sound: it is refused unless it is as long as the
/// recording.
bool RecordingAudioCompressor::lastsAsLong(const RecordingMetadata& recording,
                                           const std::filesystem::path& output) {
    try {
        const auto duration = open_(output)->duration();
        return duration && std::abs(*duration - recording.duration) <= durationTolerance;
    } catch (const MediaFileError&) {
        return false;
    }
}

void RecordingAudioCompressor::removeOutput(const std::filesystem::path& output) {
    try {
        files_.remove(output);
    } catch (const std::system_error&) { // it remains beside the WAV and is deleted with it
    }
}

void RecordingAudioCompressor::discard(const std::filesystem::path& output,
                                       const std::string& why) {
    removeOutput(output);
    throw AudioExporter::ExportError(AudioExporter::ExportError::Kind::exportFailed, why);
}

void RecordingAudioCompressor::removeSource(const RecordingMetadata& recording,
                                            const std::filesystem::path& source,
                                            const std::filesystem::path& destination) {
    try {
        files_.remove(source);
    } catch (const std::exception& error) {
        logger_.important("audio.compress.removeSource.failed",
                          {{"recordingID", recording.id.text()},
                           {"sourcePath", source.string()},
                           {"destinationPath", destination.string()},
                           {"error", std::string(error.what())}});
    }
}

} // namespace tessarune
