#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Writes a session's sound to a WAV file as it arrives and keeps that file playable: after a
/// crash, at most the last 2,000,000 bytes do not play, and the next launch of the program recovers
/// them.
///
/// `start` waits for the writer's queue; `append`, `appendSilence` and `stop` return at once. All
/// may be called from any thread. Set the callbacks before `start`; they run on the queue. A
/// failing disk never ends the session: `onError` reports it, and unwritten sound becomes silence.
/// After repeated failures, or when the disk is nearly full, the recording ends, and the part that
/// was written stays. A recorder serves one session after another.
class AudioSessionRecorder : public std::enable_shared_from_this<AudioSessionRecorder> {
  public:
    /// The operations of the catalog that the recorder needs. The catalog is in a higher layer.
    struct Catalog {
        std::filesystem::path recordingsFolder;
        std::function<void()> prepareDirectories;             ///< throws std::system_error
        std::function<bool(const RecordingMetadata&)> upsert; ///< whether it was saved
        /// Whether the audio of an entry has this base name, with any extension.
        std::function<bool(const std::string& baseName)> isNameTaken;
        UUIDSource makeID = UUID::random;
    };

    /// The host time of the first sample in a recording's file. It is later than the start of the
    /// recording, because the capture starts after the recorder and waits for its device.
    struct FirstSample {
        UUID recordingID;
        double heardAt = 0;
    };

    static constexpr int maxConsecutiveWriteFailures = 3;
    static constexpr std::uint64_t headerFlushIntervalBytes = 2'000'000;
    /// A failed flush is retried after this much more sound, a few seconds.
    static constexpr std::uint64_t headerRetryIntervalBytes = 200'000;
    /// Recording stops when the disk has less free space than this, to leave room for the
    /// transcripts.
    static constexpr std::uint64_t reservedDiskBytes = 16'000'000;
    /// At most this much sound waits for a slow disk, a few minutes. Further sound becomes silence.
    static constexpr std::size_t maximumWaitingBytes = 64'000'000;
    /// The maximum length of silence that fills a gap.
    static constexpr double longestSilenceSeconds = 24 * 3600;
    static constexpr int sampleRate = 16000; ///< of a file without sound
    static constexpr int channelCount = 1;
    static constexpr const char* audioFormat = "wav/pcm_s16le";

    /// Host, disk and logger must outlive the recorder.
    static std::shared_ptr<AudioSessionRecorder> create(Host& host, FileSystem& files,
                                                        TessaruneFileLogger& logger,
                                                        Catalog catalog,
                                                        MakeAudioConverter makeConverter);
    ~AudioSessionRecorder();
    AudioSessionRecorder(const AudioSessionRecorder&) = delete;
    AudioSessionRecorder& operator=(const AudioSessionRecorder&) = delete;

    std::function<void(const RecordingMetadata&)> onStarted;
    /// Called once per recording, when its first sound is in the file. Not called if the recording
    /// stays without sound.
    std::function<void(const FirstSample&)> onFirstSample;
    std::function<void(const RecordingMetadata&)> onFinished;
    std::function<void(const std::string&)> onError; ///< a text for the user

    /// Begins a new file and its catalog entry. Throws std::system_error if the file cannot be
    /// created. On a full disk it does not throw: the session continues without a recording,
    /// `onError` reports that, and `onStarted` is not called.
    void start();

    /// Writes sound. The first buffer decides the file's sample rate; later buffers are converted
    /// to this rate.
    void append(AudioBufferPtr buffer);

    /// Adds silence for sound that the capture lost, so that later times stay correct.
    void appendSilence(double seconds);

    /// Flushes the recorded sound to the disk. Never throws. Resumes on the main queue.
    Task<void> synchronize();

    /// Closes the file without waiting. Does nothing if none is open.
    void stop();

    /// Closes the file and returns its entry, if one was open. Never throws. Resumes on the main
    /// queue.
    Task<std::optional<RecordingMetadata>> finishAndStop();

  private:
    AudioSessionRecorder(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                         Catalog catalog, MakeAudioConverter makeConverter);

    static Task<void> synchronizeOnQueue(std::shared_ptr<AudioSessionRecorder> self);
    static Task<std::optional<RecordingMetadata>>
    finish(std::shared_ptr<AudioSessionRecorder> self);
    void startOnQueue();
    void openFile(const RecordingMetadata& item);
    std::filesystem::path unusedPath(double wallClock) const;
    void checkFreeSpace();
    void appendOnQueue(const AudioBuffer& buffer, double arrivedAt);
    void replaceLostSound(double seconds);
    void appendSilenceOnQueue(double seconds);
    void observeFormat(const AudioBuffer& buffer);
    std::vector<float> convertedToFileRate(std::vector<float> mono, double sampleRate);
    void write(const std::string& pcm);
    void write(std::uint64_t bytes, const std::function<void()>& put);
    void flushIfDue();
    void patchHeader();
    std::optional<RecordingMetadata> stopOnQueue();
    void closeFile();
    void logStopped() const;
    void handleWriteFailure(const char* event, const std::exception& error);
    void disableWriting(const std::exception& error);
    void reportFileError(const char* event, const std::exception& error);
    void report(const std::string& text) const;
    LogFields writeFailureFields(const std::exception& error) const;
    int headerSampleRate() const;
    std::uint64_t pcmBytes(double seconds) const;
    double writtenSeconds() const;

    Host& host_;
    FileSystem& files_;
    TessaruneFileLogger& logger_;
    Catalog catalog_;
    MakeAudioConverter makeConverter_;
    std::shared_ptr<SerialQueue> queue_;

    std::atomic<std::size_t> waitingBytes_ = 0; ///< queued but not written yet
    std::atomic<double> lostSeconds_ = 0;       ///< dropped because the queue was full

    // Used on the queue only:
    std::unique_ptr<AppendFile> fileHandle_;
    std::optional<RecordingMetadata> item_;
    double observedSampleRate_ = 0; // 0 until the first buffer
    std::uint64_t dataByteCount_ = 0;
    std::uint64_t unwrittenBytes_ = 0; ///< sound that could not be converted or written
    bool isFirstSampleReported_ = false;
    bool isListed_ = false; // in the catalog
    std::uint64_t nextHeaderFlushBytes_ = 0;
    int writeFailureCount_ = 0;
    int consecutiveWriteFailures_ = 0;
    int finalizeFailureCount_ = 0;
    bool didNotifyFirstWriteFailure_ = false;
    bool didNotifyWriteDegraded_ = false;
    bool recordingWriteDisabled_ = false;
    bool headerPatchIsFailing_ = false;
    std::unique_ptr<AudioConverter> converter_; // null while buffers arrive at the file's rate
    double converterRate_ = 0;
    double pendingSilence_ = 0; // seconds; written once the sample rate is known
};

} // namespace tessarune
