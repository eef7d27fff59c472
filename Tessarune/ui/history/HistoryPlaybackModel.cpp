#include "Tessarune/ui/history/HistoryPlaybackModel.h"

#include "Tessarune/history/DurationTextFormatter.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace tessarune {

namespace {

constexpr double playbackRates[] = {0.5, 0.75, 1, 1.25, 1.5, 2, 2.5, 3};

QString clock(double seconds) {
    return QString::fromStdString(DurationTextFormatter::compact(seconds));
}

} // namespace

HistoryPlaybackModel::HistoryPlaybackModel(const HistoryWindowEnvironment& environment,
                                           HistoryDetailModel& detail)
    : environment_(environment), detail_(detail) {
    if (!player())
        return;
    transcript_.emplace(*player());
    if (environment_.watchPlayback)
        watch_ = environment_.watchPlayback(*transcript_);
    const auto announce = [this](auto changed) {
        return [this, changed] { Q_EMIT(this->*changed)(); };
    };
    observations_.follow(player()->isPlaying, announce(&HistoryPlaybackModel::stateChanged));
    observations_.follow(player()->problem, announce(&HistoryPlaybackModel::stateChanged));
    observations_.follow(player()->repeatsBoundedPlayback,
                         announce(&HistoryPlaybackModel::stateChanged));
    observations_.follow(player()->duration, announce(&HistoryPlaybackModel::loadedChanged));
    observations_.follow(player()->rate, announce(&HistoryPlaybackModel::rateChanged));
    observations_.follow(player()->currentTime, [this] { moved(); });
    const auto mark = [this] { markRow(std::nullopt); };
    observations_.follow(transcript_->activeSentenceIndex, mark);
    observations_.follow(transcript_->manualHighlightedSentenceIndex, mark);
    connect(&detail_, &HistoryDetailModel::recordingChanged, this,
            &HistoryPlaybackModel::recordingChanged);
    connect(&detail_, &HistoryDetailModel::transcriptChanged, this,
            &HistoryPlaybackModel::showRows);
}

/// Closes the previous recording. The first command, such as play or seek, opens the chosen one.
void HistoryPlaybackModel::recordingChanged() {
    const auto& recording = detail_.recording();
    const auto now = recording ? std::optional(recording->id) : std::nullopt;
    if (std::exchange(chosen_, now) != now) {
        if (std::exchange(isLoaded_, false))
            player()->teardown();
        transcript_->show({});
    }
    Q_EMIT loadedChanged();
    moved();
}

void HistoryPlaybackModel::loadIfNeeded() {
    const auto& recording = detail_.recording();
    if (!isAvailable())
        return;
    const std::string& path = *recording->filePath;
    // Compression may have replaced the opened file. A file that is playing stays open.
    if (isLoaded_ && (isPlaying() || loadedPath_ == path))
        return;
    const double resumeAt = isLoaded_ ? position() : 0;
    player()->load(path);
    if (resumeAt > 0)
        player()->seek(resumeAt);
    isLoaded_ = true;
    loadedPath_ = path;
}

void HistoryPlaybackModel::showRows() {
    transcript_->show(TimedSentences(detail_.timeline()));
    markRow(std::nullopt);
}

void HistoryPlaybackModel::moved() {
    Q_EMIT positionChanged();
    const QString text = positionText();
    if (std::exchange(shownPosition_, text) != text)
        Q_EMIT positionTextChanged();
}

bool HistoryPlaybackModel::isAvailable() const {
    const auto& recording = detail_.recording();
    return player() && recording && !recording->live && recording->filePath;
}

QString HistoryPlaybackModel::problem() const {
    return player() ? QString::fromStdString(*player()->problem) : QString();
}

/// Never beyond the duration that the file states, although the sound may be a little longer.
double HistoryPlaybackModel::position() const {
    const double seconds = player() ? *player()->currentTime : 0;
    return duration() > 0 ? std::min(seconds, duration()) : seconds;
}

QString HistoryPlaybackModel::positionText() const {
    return clock(position());
}

double HistoryPlaybackModel::duration() const {
    const double known = player() ? *player()->duration : 0;
    return known > 0 || !detail_.recording() ? known : detail_.recording()->durationSeconds;
}

QString HistoryPlaybackModel::durationText() const {
    return clock(duration());
}

QStringList HistoryPlaybackModel::rates() const {
    QStringList all;
    for (const double rate : playbackRates)
        all << QString::number(rate) + QStringLiteral("×");
    return all;
}

int HistoryPlaybackModel::rateIndex() const {
    const double rate = player() ? *player()->rate : 1;
    const auto* const nearest = std::ranges::min_element(
        playbackRates, {}, [rate](double candidate) { return std::abs(candidate - rate); });
    return static_cast<int>(nearest - std::begin(playbackRates));
}

void HistoryPlaybackModel::setRateIndex(int index) {
    if (player() && index >= 0 && index < static_cast<int>(std::size(playbackRates)))
        player()->setRate(playbackRates[index]);
}

int HistoryPlaybackModel::activeRow() const {
    if (untimedRow_)
        return *untimedRow_;
    const auto sentence = transcript_ && isLoaded_ ? transcript_->highlightedIndex() : std::nullopt;
    return sentence ? detail_.rows()->rowOf(*sentence) : -1;
}

void HistoryPlaybackModel::markRow(std::optional<int> untimed) {
    untimedRow_ = untimed;
    Q_EMIT activeRowChanged();
}

void HistoryPlaybackModel::toggle() {
    loadIfNeeded();
    if (isAvailable())
        player()->togglePlayback();
}

void HistoryPlaybackModel::pause() {
    if (isPlaying())
        player()->pausePlayback();
}

void HistoryPlaybackModel::seek(double seconds) {
    loadIfNeeded();
    if (isAvailable())
        player()->seek(seconds);
}

void HistoryPlaybackModel::playRow(int row) {
    const auto sentences = detail_.rows()->sentencesOf(row);
    if (!isAvailable() || !sentences)
        return;
    loadIfNeeded();
    transcript_->playSentences(sentences->first, sentences->second);
}

void HistoryPlaybackModel::playWord(int row, int character) {
    const auto sentences = detail_.rows()->sentencesOf(row);
    if (!isAvailable() || !sentences)
        return;
    const TimedSentences::Sentence* const sentence =
        transcript_->sentences().sentenceTiming(sentences->first);
    if (!sentence)
        return;
    const QString text = QString::fromStdString(sentence->source);
    const QModelIndex index = detail_.rows()->index(row);
    if (detail_.rows()->data(index, HistoryTranscriptModel::SourceRole).toString() != text) {
        // The row's text differs from the sentence.
        loadIfNeeded();
        return transcript_->playFrom({0, 0, sentence->start});
    }
    const auto offset = static_cast<std::size_t>(text.left(character).toUtf8().size());
    for (const SentenceToken& token : transcript_->sentences().tokens(sentences->first)) {
        if (offset < token.offset || offset >= token.offset + token.length)
            continue;
        loadIfNeeded();
        return transcript_->playFrom(token);
    }
}

void HistoryPlaybackModel::focusRow(int row) {
    if (!isAvailable() || row < 0)
        return;
    loadIfNeeded();
    if (const auto sentences = detail_.rows()->sentencesOf(row))
        transcript_->focus(sentences->first);
    else
        markRow(row);
}

void HistoryPlaybackModel::stepSentence(int direction) {
    loadIfNeeded();
    if (isAvailable())
        transcript_->stepSentence(direction);
}

void HistoryPlaybackModel::toggleRepeat() {
    loadIfNeeded();
    if (isAvailable())
        transcript_->toggleRepeat();
}

} // namespace tessarune
