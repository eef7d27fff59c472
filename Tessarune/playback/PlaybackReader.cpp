#include "Tessarune/playback/PlaybackReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tessarune {

namespace {

/// Pieces this far behind the heard position are forgotten.
constexpr std::size_t mostPieces = 64;

} // namespace

void PlaybackReader::begin(const PlaybackStretch& stretch, double position) {
    stretch_ = stretch;
    pieceStart_ = std::max(0.0, position);
    taken_ = 0;
    given_ = 0;
    sounding_ = 0;
    made_.clear();
    madeFrom_ = 0;
    pieces_.clear();
    tempo_.reset();
    isOver_ = true; // unless all goes well
    mustSeek_ = true;
    beginPiece();
    isOver_ = false;
}

void PlaybackReader::setStretch(const PlaybackStretch& stretch) {
    stretch_ = stretch;
    // A block that was cut at the former end may have had more.
    mustSeek_ = true;
    if (isOver_)
        beginPiece();
    isOver_ = false;
}

std::size_t PlaybackReader::blockSamples() const {
    return static_cast<std::size_t>(std::ceil(blockSeconds * format().sampleRate)) * channels();
}

double PlaybackReader::plannedSeconds() const {
    return seconds(given_ + static_cast<std::int64_t>((made_.size() - madeFrom_) / channels()));
}

void PlaybackReader::beginPiece() {
    rate_ = wantedRate_;
    if (pieces_.size() >= mostPieces)
        pieces_.erase(pieces_.begin());
    constexpr double openEnd = std::numeric_limits<double>::infinity();
    pieces_.push_back({plannedSeconds(), pieceStart_, rate_, openEnd});
    tempo_ = rate_ == 1 ? nullptr : changeTempo_(format(), rate_);
}

/// All sound read so far is output; the next piece begins where it ends.
void PlaybackReader::endPiece() {
    if (tempo_)
        append(tempo_->flush());
    tempo_.reset();
    pieces_.back().until = plannedSeconds();
    pieceStart_ = cursor();
    taken_ = 0;
}

AudioBufferPtr PlaybackReader::next() {
    const std::size_t wanted = blockSamples();
    try {
        while (!isOver_ && made_.size() - madeFrom_ < wanted)
            make();
    } catch (...) {
        isOver_ = true;
        throw;
    }
    const std::size_t count = std::min(wanted, made_.size() - madeFrom_);
    if (count == 0)
        return nullptr;
    auto block = std::make_shared<AudioBuffer>();
    block->format = format();
    const auto first = made_.begin() + static_cast<std::ptrdiff_t>(madeFrom_);
    block->samples.assign(first, first + static_cast<std::ptrdiff_t>(count));
    madeFrom_ += count;
    given_ += static_cast<std::int64_t>(count / channels());
    sounding_ = given_;
    level_.apply(*block);
    return block;
}

AudioBufferPtr PlaybackReader::silence() {
    auto block = std::make_shared<AudioBuffer>();
    block->format = format();
    block->samples.resize(blockSamples());
    given_ += static_cast<std::int64_t>(block->frames());
    return block;
}

void PlaybackReader::make() {
    if (rate_ != wantedRate_) {
        endPiece();
        beginPiece();
    }
    if (const AudioBufferPtr sound = readSource()) {
        if (tempo_)
            append(tempo_->convert(*sound));
        else
            append(*sound);
        return;
    }
    endPiece();
    // A stretch with hardly any sound would be repeated endlessly.
    const bool goesOn = stretch_.repeats && pieceStart_ >= stretch_.start + blockSeconds;
    isOver_ = !goesOn;
    if (goesOn) {
        pieceStart_ = stretch_.start;
        mustSeek_ = true;
        beginPiece();
    }
}

AudioBufferPtr PlaybackReader::readSource() {
    constexpr std::int64_t noEnd = std::numeric_limits<std::int64_t>::max();
    const std::int64_t left =
        stretch_.end ? std::llround((*stretch_.end - cursor()) * format().sampleRate) : noEnd;
    if (left <= 0)
        return nullptr;
    if (std::exchange(mustSeek_, false))
        file_->seek(cursor());
    AudioBufferPtr block = file_->read();
    if (!block)
        return nullptr;
    const auto frames = static_cast<std::int64_t>(block->frames());
    taken_ += std::min(frames, left);
    if (frames <= left)
        return block;
    auto beginning = std::make_shared<AudioBuffer>(*block);
    beginning->samples.resize(static_cast<std::size_t>(left) * channels());
    return beginning;
}

void PlaybackReader::append(const AudioBuffer& sound) {
    made_.erase(made_.begin(), made_.begin() + static_cast<std::ptrdiff_t>(madeFrom_));
    madeFrom_ = 0;
    made_.insert(made_.end(), sound.samples.begin(), sound.samples.end());
}

double PlaybackReader::positionAt(double outputSeconds) const {
    const auto after = std::find_if(pieces_.begin(), pieces_.end(),
                                    [&](const Piece& piece) { return piece.from > outputSeconds; });
    if (after == pieces_.begin())
        return pieces_.empty() ? pieceStart_ : pieces_.front().source;
    const Piece& piece = *std::prev(after);
    return piece.source + (std::min(outputSeconds, piece.until) - piece.from) * piece.rate;
}

} // namespace tessarune
