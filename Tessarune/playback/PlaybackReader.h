#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/playback/Loudness.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tessarune {

/// What is to be heard of a recording, in seconds of it.
struct PlaybackStretch {
    double start = 0;          ///< where it begins, and each time again if it repeats
    std::optional<double> end; ///< absent: the end of the recording
    bool repeats = false;
};

/// Makes what is written to the output of a recording: any stretch of it, repeated or not, at any
/// speed and at its level, without a gap where one goes over into another. Knows which place of the
/// recording each moment of its output has.
///
/// One thread at a time; reading waits for the disk. Sound is read as it is asked for.
class PlaybackReader {
  public:
    static constexpr double blockSeconds = 0.05;

    PlaybackReader(std::unique_ptr<MediaFile> file, MakeTempoChanger changeTempo)
        : file_(std::move(file)), changeTempo_(std::move(changeTempo)) {}

    AudioFormat format() const { return file_->format(); }
    MediaFile& file() { return *file_; }
    LevelControl& level() { return level_; }

    /// From now on the output is that of `stretch`, from `position` on; what was made so far does
    /// not count any more. Throws AudioConversionError, as `setStretch` does; after that there is
    /// nothing to give.
    void begin(const PlaybackStretch& stretch, double position);
    /// Goes on where it is, as a part of another stretch.
    void setStretch(const PlaybackStretch& stretch);
    /// Of what is read from now on.
    void setRate(double rate) { wantedRate_ = rate; }

    /// The next piece of output, or null at the end. Never empty. Throws MediaFileError and
    /// AudioConversionError; after that it gives null.
    AudioBufferPtr next();

    /// Some output without sound, for the time until the end has been heard.
    AudioBufferPtr silence();
    /// So much of the output, in seconds since `begin`, has sound.
    double soundSeconds() const { return seconds(sounding_); }
    /// The place in the recording that is heard when so much of the output has been heard.
    double positionAt(double outputSeconds) const;

  private:
    /// A part of the output in which the place goes forward evenly.
    struct Piece {
        double from;   ///< seconds of output
        double source; ///< the place there
        double rate;
        double until; ///< seconds of output; behind it the place stays
    };

    double seconds(std::int64_t frames) const {
        return static_cast<double>(frames) / file_->format().sampleRate;
    }
    std::size_t channels() const { return static_cast<std::size_t>(format().channels); }
    std::size_t blockSamples() const;
    /// Of the output with what was not asked for yet.
    double plannedSeconds() const;
    double cursor() const { return pieceStart_ + seconds(taken_); }
    void make();
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
    bool isOver_ = true;      ///< nothing more is read
    double pieceStart_ = 0;   ///< the place where the current piece begins
    std::int64_t taken_ = 0;  ///< frames read for it
    std::vector<float> made_; ///< output that was not asked for yet
    std::size_t madeFrom_ = 0;
    std::int64_t given_ = 0;    ///< frames of output since `begin`
    std::int64_t sounding_ = 0; ///< as many of them as until the last that is no added silence
    std::vector<Piece> pieces_;
};

} // namespace tessarune
