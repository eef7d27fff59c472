#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"

#include <algorithm>
#include <utility>

namespace tessarune {

void SpeechAnalyzerTranscriber::append(AudioBufferPtr buffer) {
    {
        const MutexLock lock(stateLock_);
        if (!state_.inputCont)
            return;
        state_.perf.perfFedAudioSeconds += buffer->seconds();
        ++state_.perf.perfAnalyzerInputSourceBuffers;
    }
    for (const AudioBuffer& batch : enqueueAnalyzerInput(*buffer))
        feedAnalyzerInput(batch);
}

void SpeechAnalyzerTranscriber::skip(double seconds) {
    // The incomplete batch precedes the gap.
    if (const auto rest = takeAccumulator())
        feedAnalyzerInput(*rest);
    if (const auto session = inputSession())
        noteLostInput(seconds, session->generation);
}

/// Returns the batches that this buffer completes. Capture buffers are too small to feed one by
/// one: an element of the input stream costs more than the conversion of its sound.
std::vector<AudioBuffer>
SpeechAnalyzerTranscriber::enqueueAnalyzerInput(const AudioBuffer& buffer) {
    std::vector<AudioBuffer> batches;
    const std::size_t frames = buffer.frames();
    if (frames == 0)
        return batches;
    const auto channels = static_cast<std::size_t>(buffer.format.channels);
    const auto target = std::max<std::size_t>(
        static_cast<std::size_t>(buffer.format.sampleRate * analyzerInputChunkSeconds), 1);

    const MutexLock lock(inputLock_);
    auto& accumulator = inputAccumulator_;
    const auto takeBatch = [&]() REQUIRES_LOCK(inputLock_) {
        if (accumulator->frames() > 0)
            batches.push_back(std::move(*accumulator));
        accumulator.reset();
    };
    if (accumulator &&
        (accumulator->format != buffer.format ||
         accumulator->samples.size() + buffer.samples.size() > accumulator->samples.capacity()))
        takeBatch();
    if (!accumulator) {
        accumulator = AudioBuffer{buffer.format, {}};
        accumulator->samples.reserve(std::max(target, frames) * channels);
    }
    accumulator->samples.insert(accumulator->samples.end(), buffer.samples.begin(),
                                buffer.samples.begin() +
                                    static_cast<std::ptrdiff_t>(frames * channels));
    if (accumulator->frames() >= target)
        takeBatch();
    return batches;
}

/// Returns and removes the incomplete batch; `nullopt` if it is empty.
std::optional<AudioBuffer> SpeechAnalyzerTranscriber::takeAccumulator() {
    const MutexLock lock(inputLock_);
    std::optional<AudioBuffer> rest = std::exchange(inputAccumulator_, std::nullopt);
    return rest && rest->frames() > 0 ? std::move(rest) : std::nullopt;
}

void SpeechAnalyzerTranscriber::flushInputAccumulator(const std::string& reason) {
    const std::optional<AudioBuffer> rest = takeAccumulator();
    if (!rest)
        return;
    {
        const MutexLock lock(stateLock_);
        ++state_.perf.perfAnalyzerInputFlushes;
    }
    platform_.logger.event("speechAnalyzer.input.flush",
                           {{"locale", localeID_},
                            {"reason", reason},
                            {"frames", static_cast<std::int64_t>(rest->frames())},
                            {"sampleRate", rest->format.sampleRate}});
    feedAnalyzerInput(*rest);
}

std::optional<SpeechAnalyzerTranscriber::AnalyzerInputSession>
SpeechAnalyzerTranscriber::inputSession() const {
    const MutexLock lock(stateLock_);
    if (!state_.inputCont || !state_.analyzerFormat)
        return std::nullopt;
    return AnalyzerInputSession{*state_.inputCont, *state_.analyzerFormat, state_.generation};
}

void SpeechAnalyzerTranscriber::feedAnalyzerInput(const AudioBuffer& batch) {
    const auto session = inputSession();
    if (!session)
        return;
    if (session->continuation.queuedCount() >= maximumWaitingBatches) {
        noteLostInput(batch.seconds(), session->generation);
        reportFullInput();
        return;
    }
    const double before = now();
    std::optional<AudioBuffer> converted = convert(batch, session->format);
    const double busy = now() - before;
    {
        const MutexLock lock(stateLock_);
        state_.perf.perfConversionBusySeconds += busy;
    }
    if (!converted)
        noteLostInput(batch.seconds(), session->generation);
    if (!converted || converted->frames() == 0 ||
        !recordAnalyzerInput(converted->seconds(), batch.frames(), *session))
        return;
    const double yieldStart = now();
    session->continuation.yield({std::make_shared<const AudioBuffer>(std::move(*converted))});
    const double yieldSeconds = now() - yieldStart;
    const MutexLock lock(stateLock_);
    state_.perf.perfAnalyzerInputYieldBusySeconds += yieldSeconds;
}

/// Ignores sound that was lost before the first batch, because the first batch sets the epoch.
void SpeechAnalyzerTranscriber::noteLostInput(double seconds, std::int64_t generation) {
    const MutexLock lock(stateLock_);
    if (state_.generation == generation && state_.audioEpoch > 0)
        state_.timeline.addGap(state_.latestAudioTime, seconds);
}

/// Logs once per session that the queue is full. A recogniser that is only slow never fills the
/// queue. If a recogniser hangs, the limit keeps the queue from using up all memory.
void SpeechAnalyzerTranscriber::reportFullInput() {
    {
        const MutexLock lock(stateLock_);
        if (std::exchange(state_.didReportFullInput, true))
            return;
    }
    platform_.logger.important("speechAnalyzer.input.full", {{"locale", localeID_}});
}

/// Returns `nullopt` if the conversion failed and the batch is lost. The result may be empty while
/// the converter fills its filter.
std::optional<AudioBuffer> SpeechAnalyzerTranscriber::convert(const AudioBuffer& batch,
                                                              AudioFormat format) {
    const MutexLock lock(converterLock_);
    try {
        if (!converter_ || converterInput_ != batch.format ||
            converter_->outputFormat() != format) {
            converterInput_.reset();
            converter_ = platform_.makeConverter(batch.format, format);
            converterInput_ = batch.format;
        }
        return converter_->convert(batch);
    } catch (const std::exception&) {
        // A converter that has failed is unusable; the next batch gets a new one.
        converter_.reset();
        return std::nullopt;
    }
}

/// Returns false if the session of the batch is over.
bool SpeechAnalyzerTranscriber::recordAnalyzerInput(double convertedAudioSeconds,
                                                    std::size_t sourceFrames,
                                                    const AnalyzerInputSession& session) {
    const double time = now();
    const MutexLock lock(stateLock_);
    if (state_.generation != session.generation || state_.inputCont != session.continuation)
        return false;
    if (state_.audioEpoch == 0)
        state_.audioEpoch = time - convertedAudioSeconds;
    state_.latestAudioTime += convertedAudioSeconds;
    state_.perf.perfConvertedAudioSeconds += convertedAudioSeconds;
    ++state_.perf.perfAnalyzerInputBatches;
    state_.perf.perfAnalyzerInputBatchFrames += static_cast<double>(sourceFrames);
    return true;
}

} // namespace tessarune
