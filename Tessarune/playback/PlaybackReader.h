#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/playback/Loudness.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tessarune {

/// A stretch of a recording to play, in seconds from its start.
struct PlaybackStretch {
    double start = 0;          ///< each repetition begins here
    std::optional<double> end; ///< `nullopt`: the end of the recording
    bool repeats = false;
};

/// Produces the output for a recording: any stretch of it, repeated or not, at any speed and with
/// the gain of `level()`, without gaps between repetitions. Maps each moment of the output to a
/// position in the recording.
///
/// One thread at a time; reading waits for the disk. Sound is read on demand.
class PlaybackReader {
  public:
    static constexpr double blockSeconds = 0.05;

    PlaybackReader(std::unique_ptr<MediaFile> file, MakeTempoChanger changeTempo)
        : file_(std::move(file)), changeTempo_(std::move(changeTempo)) {}

    AudioFormat format() const { return file_->format(); }
    MediaFile& file() { return *file_; }
    LevelControl& level() { return level_; }

    /// Starts a new output: `stretch`, from `position` on. Throws AudioConversionError; after that,
    /// `next` returns null.
    void begin(const PlaybackStretch& stretch, double position);
    /// Continues from the current position within another stretch. Throws AudioConversionError;
    /// after that, `next` returns only the rest of the earlier output.
    void setStretch(const PlaybackStretch& stretch);
    /// Sets the speed of the sound that is read from now on.
    void setRate(double rate) { wantedRate_ = rate; }

    /// The next piece of output, or null at the end. Never empty. Throws MediaFileError and
    /// AudioConversionError; after that it returns null.
    AudioBufferPtr next();

    /// A block of silence. The player outputs such blocks after the last sound until that sound has
    /// been heard.
    AudioBufferPtr silence();
    /// The length of the output with sound, in seconds since `begin`.
    double soundSeconds() const { return seconds(soundFrames_); }
    /// The position in the recording that is heard after `outputSeconds` of output.
    double positionAt(double outputSeconds) const;

  private:
    /// A part of the output with a constant speed.
    struct Piece {
        double from;   ///< seconds of output
        double source; ///< the position in the recording at `from`
        double rate;
        double until; ///< seconds of output; from then on the position does not move
    };

    double seconds(std::int64_t frames) const {
        return static_cast<double>(frames) / file_->format().sampleRate;
    }
    std::size_t channels() const { return static_cast<std::size_t>(format().channels); }
    std::size_t blockSamples() const;
    /// The length of the output, including the part that `next` has not returned yet.
    double plannedSeconds() const;
    double cursor() const { return pieceStart_ + seconds(readFrames_); }
    void produce();
    void beginPiece();
    void endPiece();
    AudioBufferPtr readSource();
    void append(const AudioBuffer& sound);

    std::unique_ptr<MediaFile> file_;
    MakeTempoChanger changeTempo_;
    LevelControl level_;

    PlaybackStretch stretch_;
    double wantedRate_ = 1;
    double rate_ = 1;
    std::unique_ptr<AudioConverter> tempo_; ///< null at a rate of 1
    bool mustSeek_ = false;
    bool isOver_ = true;            ///< there is nothing more to read
    double pieceStart_ = 0;         ///< the position at which the current piece begins
    std::int64_t readFrames_ = 0;   ///< frames read for the current piece
    std::vector<float> pending_;    ///< output for `next`
    std::size_t pendingFrom_ = 0;   ///< the first sample in `pending_` that was not returned yet
    std::int64_t outputFrames_ = 0; ///< frames of output since `begin`
    std::int64_t soundFrames_ = 0;  ///< `outputFrames_` up to the last frame with sound
    std::vector<Piece> pieces_;
};

} // namespace tessarune
