#include "Tessarune/audio/AudioSessionRecorder.h"

#include "Tessarune/audio/RecordedPCM.h"
#include "Tessarune/audio/WAVHeader.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t bytesPerSample = 2;

std::system_error diskFull(const std::filesystem::path& path) {
    return {std::make_error_code(std::errc::no_space_on_device), path.string()};
}

bool isDiskFull(const std::system_error& error) {
    return error.code() == std::errc::no_space_on_device ||
           error.code() == std::error_condition(EDQUOT, std::generic_category());
}

} // namespace

std::shared_ptr<AudioSessionRecorder>
AudioSessionRecorder::create(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                             Catalog catalog, MakeAudioConverter makeConverter) {
    return std::shared_ptr<AudioSessionRecorder>(new AudioSessionRecorder(
        host, files, logger, std::move(catalog), std::move(makeConverter)));
}

AudioSessionRecorder::AudioSessionRecorder(Host& host, FileSystem& files,
                                           TessaruneFileLogger& logger, Catalog catalog,
                                           MakeAudioConverter makeConverter)
    : host_(host),
      files_(files),
      logger_(logger),
      catalog_(std::move(catalog)),
      makeConverter_(std::move(makeConverter)),
      queue_(host.serialQueue("Tessarune.AudioSessionRecorder.writerQueue",
                              QueuePriority::standard)) {}

AudioSessionRecorder::~AudioSessionRecorder() = default;

// Operations

void AudioSessionRecorder::start() {
    std::exception_ptr failure;
    queue_->sync([&] {
        try {
            startOnQueue();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    if (failure)
        std::rethrow_exception(failure);
}

void AudioSessionRecorder::append(AudioBufferPtr buffer) {
    const std::size_t bytes = buffer->samples.size() * sizeof(float);
    if (waitingBytes_ + bytes > maximumWaitingBytes) {
        lostSeconds_ += buffer->seconds();
        return;
    }
    waitingBytes_ += bytes;
    const double lost = lostSeconds_.exchange(0);
    queue_->async([weak = weak_from_this(), buffer = std::move(buffer), bytes, lost,
                   arrivedAt = host_.now()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->waitingBytes_ -= bytes;
        self->replaceLostSound(lost);
        self->appendOnQueue(*buffer, arrivedAt);
    });
}

void AudioSessionRecorder::appendSilence(double seconds) {
    queue_->async([weak = weak_from_this(), seconds] {
        if (const auto self = weak.lock())
            self->appendSilenceOnQueue(seconds);
    });
}

void AudioSessionRecorder::stop() {
    logger_.event("audioRecorder.stop.request");
    // The block owns the recorder, so the file is completed even if the caller drops the recorder.
    queue_->async([self = shared_from_this()] { self->stopOnQueue(); });
}

Task<std::optional<RecordingMetadata>> AudioSessionRecorder::finishAndStop() {
    return finish(shared_from_this());
}

Task<std::optional<RecordingMetadata>>
AudioSessionRecorder::finish(std::shared_ptr<AudioSessionRecorder> self) {
    self->logger_.event("audioRecorder.stop.request", {{"mode", std::string("await")}});
    co_return co_await runOn(Executor::queue(self->host_, self->queue_),
                             [&] { return self->stopOnQueue(); });
}

Task<void> AudioSessionRecorder::synchronize() {
    return synchronizeOnQueue(shared_from_this());
}

Task<void> AudioSessionRecorder::synchronizeOnQueue(std::shared_ptr<AudioSessionRecorder> self) {
    co_await runOn(Executor::queue(self->host_, self->queue_), [&] {
        self->nextHeaderFlushBytes_ = self->dataByteCount_;
        if (self->fileHandle_)
            self->flushIfDue();
    });
}

// Start

void AudioSessionRecorder::startOnQueue() {
    stopOnQueue();
    RecordingMetadata item;
    item.id = catalog_.makeID();
    item.startedAt = host_.wallClock();
    item.monotonicStart = host_.now();
    item.audioFormat = audioFormat;
    item.byteCount = WAVHeader::size;
    item.sampleRate = sampleRate;
    item.channelCount = channelCount;
    try {
        catalog_.prepareDirectories();
        item.filePath = unusedPath(item.startedAt).string();
        logger_.important("audioRecorder.start.request",
                          {{"recordingID", item.id.text()},
                           {"path", item.filePath},
                           {"targetSampleRate", std::int64_t{sampleRate}},
                           {"channelCount", std::int64_t{channelCount}}});
        checkFreeSpace();
        openFile(item);
    } catch (const std::system_error& error) {
        fileHandle_.reset();
        if (!isDiskFull(error))
            throw;
        logger_.important("audioRecorder.start.diskFull",
                          {{"recordingID", item.id.text()}, {"error", std::string(error.what())}});
        report(localized("录音写入失败：%@", {error.what()}));
        return;
    }
    item_ = item;
    isListed_ = catalog_.upsert(item);
    logger_.event("audioRecorder.start.done",
                  {{"recordingID", item.id.text()}, {"path", item.filePath}});
    if (onStarted)
        onStarted(item);
}

/// The path of a new recording. Avoids the names of other recordings, because two sessions may
/// start in the same second if the clock is set back. A file of the same name that has no entry in
/// the catalog is replaced.
std::filesystem::path AudioSessionRecorder::unusedPath(double wallClock) const {
    const std::string stamp = DateText::formatted(wallClock, "yyyyMMdd-HHmmss", "en_US_POSIX");
    std::string name = stamp;
    for (int i = 2; catalog_.isNameTaken && catalog_.isNameTaken(name); ++i)
        name = stamp + "-" + std::to_string(i);
    return catalog_.recordingsFolder / (name + ".wav");
}

/// Throws std::system_error if the disk is nearly full.
void AudioSessionRecorder::checkFreeSpace() {
    std::uint64_t left = reservedDiskBytes;
    try {
        left = files_.freeSpace(catalog_.recordingsFolder);
    } catch (const std::system_error&) {
        return; // the write will report the failure
    }
    if (left < reservedDiskBytes)
        throw diskFull(catalog_.recordingsFolder);
}

void AudioSessionRecorder::openFile(const RecordingMetadata& item) {
    files_.remove(item.filePath);
    fileHandle_ = files_.create(item.filePath);
    observedSampleRate_ = 0;
    dataByteCount_ = 0;
    isFirstSampleReported_ = false;
    nextHeaderFlushBytes_ = headerFlushIntervalBytes;
    writeFailureCount_ = 0;
    consecutiveWriteFailures_ = 0;
    finalizeFailureCount_ = 0;
    didNotifyFirstWriteFailure_ = false;
    didNotifyWriteDegraded_ = false;
    recordingWriteDisabled_ = false;
    headerPatchIsFailing_ = false;
    converter_.reset();
    pendingSilence_ = 0;
    unwrittenBytes_ = 0;
    try {
        fileHandle_->append(WAVHeader{.sampleRate = sampleRate}.encoded());
    } catch (...) {
        fileHandle_.reset();
        try {
            files_.remove(item.filePath);
        } catch (const std::system_error&) { // only the first failure is reported
        }
        throw;
    }
}

// Sound

void AudioSessionRecorder::appendOnQueue(const AudioBuffer& buffer, double arrivedAt) {
    if (!fileHandle_ || recordingWriteDisabled_)
        return;
    auto mono = downmixed(buffer);
    if (mono.empty())
        return;
    if (observedSampleRate_ == 0)
        observeFormat(buffer);
    std::string pcm;
    try {
        pcm = pcmS16LEData(convertedToFileRate(std::move(mono), buffer.format.sampleRate));
    } catch (const std::exception& error) {
        converter_.reset();
        unwrittenBytes_ += pcmBytes(buffer.seconds());
        handleWriteFailure("audioRecorder.convert.failed", error);
        return;
    }
    if (!pcm.empty())
        write(pcm);
    const bool hasSample = dataByteCount_ > 0 && unwrittenBytes_ == 0;
    if (hasSample && !std::exchange(isFirstSampleReported_, true) && onFirstSample)
        onFirstSample({item_->id, arrivedAt - writtenSeconds()});
}

/// Takes the file's sample rate from the first buffer. Patches the header at once, so that the file
/// plays at the right speed even after a crash before the first regular patch.
void AudioSessionRecorder::observeFormat(const AudioBuffer& buffer) {
    observedSampleRate_ = buffer.format.sampleRate;
    if (headerSampleRate() != sampleRate) {
        try {
            patchHeader();
        } catch (const std::exception& error) {
            reportFileError("audioRecorder.patchHeader.failed", error);
        }
    }
    appendSilenceOnQueue(std::exchange(pendingSilence_, 0));
}

/// Returns the sound at the file's rate. The sound has another rate if another device took over
/// during the session.
std::vector<float> AudioSessionRecorder::convertedToFileRate(std::vector<float> mono, double rate) {
    const bool sameAsFile = rate == observedSampleRate_;
    std::vector<float> result;
    if (converter_ && (sameAsFile || rate != converterRate_)) {
        result = converter_->flush().samples;
        converter_.reset();
    }
    if (sameAsFile) {
        result.insert(result.end(), mono.begin(), mono.end());
        return result;
    }
    if (!converter_) {
        converter_ = makeConverter_({rate, channelCount},
                                    {static_cast<double>(headerSampleRate()), channelCount});
        converterRate_ = rate;
    }
    const AudioBuffer converted = converter_->convert({{rate, channelCount}, std::move(mono)});
    result.insert(result.end(), converted.samples.begin(), converted.samples.end());
    return result;
}

/// Writes silence for sound that was dropped because the disk was too slow, so that later times
/// stay correct. Reports it like a failed write.
void AudioSessionRecorder::replaceLostSound(double seconds) {
    if (!fileHandle_ || recordingWriteDisabled_ || seconds <= 0)
        return;
    const std::system_error tooSlow(std::make_error_code(std::errc::device_or_resource_busy),
                                    item_->filePath);
    handleWriteFailure("audioRecorder.write.tooSlow", tooSlow);
    appendSilenceOnQueue(seconds);
}

void AudioSessionRecorder::appendSilenceOnQueue(double seconds) {
    if (!fileHandle_ || recordingWriteDisabled_ || !(seconds > 0))
        return;
    if (observedSampleRate_ == 0) {
        pendingSilence_ += seconds;
        return;
    }
    const std::uint64_t bytes = pcmBytes(std::min(seconds, longestSilenceSeconds));
    write(bytes, [&] { fileHandle_->appendZeros(bytes); });
}

void AudioSessionRecorder::write(const std::string& pcm) {
    write(pcm.size(), [&] { fileHandle_->append(pcm); });
}

/// Sound that cannot be written becomes silence before the next write, so that later times stay
/// correct.
void AudioSessionRecorder::write(std::uint64_t bytes, const std::function<void()>& put) {
    try {
        if (unwrittenBytes_ > 0) {
            fileHandle_->appendZeros(unwrittenBytes_);
            dataByteCount_ += std::exchange(unwrittenBytes_, 0);
        }
        put();
    } catch (const std::exception& error) {
        unwrittenBytes_ += bytes;
        handleWriteFailure("audioRecorder.write.pcmBuffer.failed", error);
        return;
    }
    dataByteCount_ += bytes;
    consecutiveWriteFailures_ = 0;
    flushIfDue();
}

/// At regular intervals, flushes everything written so far, so that it survives a crash or a power
/// failure, and checks the free space. If the catalog could not save the recording's entry, tries
/// again to save it, because a recording without an entry is lost in a crash.
void AudioSessionRecorder::flushIfDue() {
    if (dataByteCount_ < nextHeaderFlushBytes_)
        return;
    if (!isListed_)
        isListed_ = catalog_.upsert(*item_);
    try {
        patchHeader();
        fileHandle_->synchronize();
        nextHeaderFlushBytes_ = dataByteCount_ + headerFlushIntervalBytes;
        headerPatchIsFailing_ = false;
    } catch (const std::exception& error) {
        // Retries after some more sound, but reports only the first failure.
        nextHeaderFlushBytes_ = dataByteCount_ + headerRetryIntervalBytes;
        if (!std::exchange(headerPatchIsFailing_, true))
            reportFileError("audioRecorder.patchHeader.failed", error);
        return;
    }
    try {
        checkFreeSpace();
    } catch (const std::exception& error) {
        handleWriteFailure("audioRecorder.write.diskFull", error);
        disableWriting(error);
    }
}

void AudioSessionRecorder::patchHeader() {
    const WAVHeader header{.sampleRate = static_cast<std::uint32_t>(headerSampleRate()),
                           .dataSize = dataByteCount_};
    fileHandle_->overwrite(0, header.encoded());
}

int AudioSessionRecorder::headerSampleRate() const {
    return observedSampleRate_ > 0 ? static_cast<int>(observedSampleRate_) : sampleRate;
}

/// The bytes that sound of this length takes in the file.
std::uint64_t AudioSessionRecorder::pcmBytes(double seconds) const {
    return static_cast<std::uint64_t>(std::llround(seconds * headerSampleRate())) * bytesPerSample;
}

double AudioSessionRecorder::writtenSeconds() const {
    return static_cast<double>(dataByteCount_) /
           (static_cast<double>(headerSampleRate()) * bytesPerSample);
}

// Stop

std::optional<RecordingMetadata> AudioSessionRecorder::stopOnQueue() {
    const double lost = lostSeconds_.exchange(0);
    if (!fileHandle_)
        return std::nullopt;
    replaceLostSound(lost);
    closeFile();
    RecordingMetadata& item = *item_;
    item.duration = writtenSeconds();
    item.endedAt = item.startedAt + (host_.now() - *item.monotonicStart);
    item.byteCount = static_cast<std::int64_t>(WAVHeader::size + dataByteCount_);
    item.sampleRate = headerSampleRate();
    catalog_.upsert(item);
    logStopped();
    fileHandle_.reset();
    auto finished = std::exchange(item_, std::nullopt);
    if (onFinished)
        onFinished(*finished);
    return finished;
}

void AudioSessionRecorder::closeFile() {
    if (converter_ && !recordingWriteDisabled_) {
        try {
            if (const auto rest = pcmS16LEData(converter_->flush().samples); !rest.empty())
                write(rest);
        } catch (const std::exception& error) {
            handleWriteFailure("audioRecorder.convert.failed", error);
        }
    }
    converter_.reset();
    const auto attempt = [&](const char* event, const std::function<void()>& step) {
        try {
            step();
        } catch (const std::exception& error) {
            reportFileError(event, error);
        }
    };
    attempt("audioRecorder.stop.patchHeader.failed", [&] { patchHeader(); });
    attempt("audioRecorder.stop.synchronize.failed", [&] { fileHandle_->synchronize(); });
    attempt("audioRecorder.stop.close.failed", [&] { fileHandle_->close(); });
}

void AudioSessionRecorder::logStopped() const {
    const bool isDegraded = writeFailureCount_ > 0 || finalizeFailureCount_ > 0;
    const LogFields fields{{"recordingID", item_->id.text()},
                           {"path", item_->filePath},
                           {"duration", item_->duration},
                           {"sampleRate", *item_->sampleRate},
                           {"byteCount", item_->byteCount},
                           {"dataBytes", static_cast<std::int64_t>(dataByteCount_)},
                           {"outcome", std::string(isDegraded ? "degraded" : "complete")},
                           {"finalizeFailureCount", std::int64_t{finalizeFailureCount_}},
                           {"writeDisabled", recordingWriteDisabled_}};
    logger_.event("audioRecorder.stop.done", fields);
    if (isDegraded)
        logger_.important("audioRecorder.stop.degraded", fields);
}

// Failures

void AudioSessionRecorder::handleWriteFailure(const char* event, const std::exception& error) {
    ++writeFailureCount_;
    ++consecutiveWriteFailures_;
    if (!std::exchange(didNotifyFirstWriteFailure_, true)) {
        logger_.important(event, writeFailureFields(error));
        report(localized("录音写入失败：%@", {error.what()}));
    }
    if (consecutiveWriteFailures_ >= maxConsecutiveWriteFailures)
        disableWriting(error);
}

/// Ends the recording but keeps the part that was written; the session continues.
void AudioSessionRecorder::disableWriting(const std::exception& error) {
    recordingWriteDisabled_ = true;
    if (std::exchange(didNotifyWriteDegraded_, true))
        return;
    LogFields fields = writeFailureFields(error);
    fields.add("threshold", std::int64_t{maxConsecutiveWriteFailures});
    logger_.important("audioRecorder.write.degraded", std::move(fields));
    report(localized("录音写入持续失败，已保留目前已写入的录音。"));
}

void AudioSessionRecorder::reportFileError(const char* event, const std::exception& error) {
    ++finalizeFailureCount_;
    logger_.important(event, {{"recordingID", item_->id.text()},
                              {"dataBytes", static_cast<std::int64_t>(dataByteCount_)},
                              {"finalizeFailureCount", std::int64_t{finalizeFailureCount_}},
                              {"error", std::string(error.what())}});
    if (finalizeFailureCount_ == 1)
        report(localized("录音文件收尾失败：%@", {error.what()}));
}

LogFields AudioSessionRecorder::writeFailureFields(const std::exception& error) const {
    return {{"recordingID", item_->id.text()},
            {"dataBytes", static_cast<std::int64_t>(dataByteCount_)},
            {"writeFailureCount", std::int64_t{writeFailureCount_}},
            {"consecutiveWriteFailures", std::int64_t{consecutiveWriteFailures_}},
            {"error", std::string(error.what())}};
}

void AudioSessionRecorder::report(const std::string& text) const {
    if (onError)
        onError(text);
}

} // namespace tessarune
