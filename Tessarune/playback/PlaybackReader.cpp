#include "Tessarune/playback/PlaybackReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tessarune {

namespace {

/// Only the newest pieces are kept. Older ones lie far behind the heard position.
constexpr std::size_t maximumPieces = 64;

} // namespace

void PlaybackReader::begin(const PlaybackStretch& stretch, double position) {
    stretch_ = stretch;
    pieceStart_ = std::max(0.0, position);
    readFrames_ = 0;
    outputFrames_ = 0;
    soundFrames_ = 0;
    pending_.clear();
    pendingFrom_ = 0;
    pieces_.clear();
    tempo_.reset();
    isOver_ = true; // stays true if `beginPiece` throws
    mustSeek_ = true;
    beginPiece();
    isOver_ = false;
}

void PlaybackReader::setStretch(const PlaybackStretch& stretch) {
    stretch_ = stretch;
    // If the last block was cut at the former end, the part that was cut off must be read again.
    mustSeek_ = true;
    if (isOver_)
        beginPiece();
    isOver_ = false;
}

std::size_t PlaybackReader::blockSamples() const {
    return static_cast<std::size_t>(std::ceil(blockSeconds * format().sampleRate)) * channels();
}

double PlaybackReader::plannedSeconds() const {
    return seconds(outputFrames_ +
                   static_cast<std::int64_t>((pending_.size() - pendingFrom_) / channels()));
}

void PlaybackReader::beginPiece() {
    rate_ = wantedRate_;
    if (pieces_.size() >= maximumPieces)
        pieces_.erase(pieces_.begin());
    constexpr double openEnd = std::numeric_limits<double>::infinity();
    pieces_.push_back({plannedSeconds(), pieceStart_, rate_, openEnd});
    tempo_ = rate_ == 1 ? nullptr : changeTempo_(format(), rate_);
}

/// Outputs all sound read so far; the next piece begins where that sound ends.
void PlaybackReader::endPiece() {
    if (tempo_)
        append(tempo_->flush());
    tempo_.reset();
    pieces_.back().until = plannedSeconds();
    pieceStart_ = cursor();
    readFrames_ = 0;
}

AudioBufferPtr PlaybackReader::next() {
    const std::size_t wanted = blockSamples();
    try {
        while (!isOver_ && pending_.size() - pendingFrom_ < wanted)
            produce();
    } catch (...) {
        isOver_ = true;
        throw;
    }
    const std::size_t count = std::min(wanted, pending_.size() - pendingFrom_);
    if (count == 0)
        return nullptr;
    auto block = std::make_shared<AudioBuffer>();
    block->format = format();
    const auto first = pending_.begin() + static_cast<std::ptrdiff_t>(pendingFrom_);
    block->samples.assign(first, first + static_cast<std::ptrdiff_t>(count));
    pendingFrom_ += count;
    outputFrames_ += static_cast<std::int64_t>(count / channels());
    soundFrames_ = outputFrames_;
    level_.apply(*block);
    return block;
}

AudioBufferPtr PlaybackReader::silence() {
    auto block = std::make_shared<AudioBuffer>();
    block->format = format();
    block->samples.resize(blockSamples());
    outputFrames_ += static_cast<std::int64_t>(block->frames());
    return block;
}

void PlaybackReader::produce() {
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
    // Repeating a stretch with hardly any sound would never fill a block.
    const bool repeatsNow = stretch_.repeats && pieceStart_ >= stretch_.start + blockSeconds;
    isOver_ = !repeatsNow;
    if (repeatsNow) {
        pieceStart_ = stretch_.start;
        mustSeek_ = true;
        beginPiece();
    }
}

AudioBufferPtr PlaybackReader::readSource() {
    constexpr std::int64_t noEnd = std::numeric_limits<std::int64_t>::max();
    const std::int64_t remaining =
        stretch_.end ? std::llround((*stretch_.end - cursor()) * format().sampleRate) : noEnd;
    if (remaining <= 0)
        return nullptr;
    if (std::exchange(mustSeek_, false))
        file_->seek(cursor());
    AudioBufferPtr block = file_->read();
    if (!block)
        return nullptr;
    const auto frames = static_cast<std::int64_t>(block->frames());
    readFrames_ += std::min(frames, remaining);
    if (frames <= remaining)
        return block;
    auto beginning = std::make_shared<AudioBuffer>(*block);
    beginning->samples.resize(static_cast<std::size_t>(remaining) * channels());
    return beginning;
}

void PlaybackReader::append(const AudioBuffer& sound) {
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(pendingFrom_));
    pendingFrom_ = 0;
    pending_.insert(pending_.end(), sound.samples.begin(), sound.samples.end());
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
