#include "Tessarune/ui/history/HistoryDetailModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/host/RunOn.h"

#include <iterator>
#include <utility>

namespace tessarune {

namespace {

/// The contents of a recording's files.
struct ShownFiles {
    HistoryTranscriptPayload payload;
    HistoryWordTimeline timeline;
    std::string problem;
};

ShownFiles readFiles(RecordingCatalog& catalog, FileSystem& files, const UUID& id) {
    ShownFiles found;
    const auto read = [&](const std::filesystem::path& path) {
        try {
            return files.exists(path) ? files.read(path) : std::string();
        } catch (const std::exception& error) {
            found.problem = error.what();
            return std::string();
        }
    };
    found.payload = HistoryTranscriptPayload::trimmed(read(catalog.transcriptURL(id)),
                                                      read(catalog.bilingualTranscriptURL(id)));
    found.timeline = HistoryWordTimeline::decoded(read(catalog.wordTimelineURL(id)))
                         .value_or(HistoryWordTimeline());
    return found;
}

} // namespace

HistoryDetailModel::HistoryDetailModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.detail", QueuePriority::standard)) {
    observation_ = lifeline_.observe(
        environment_.notifications, NotificationName::recordingTranscriptDidUpdate,
        environment_.host, [](HistoryDetailModel& model, const NotificationObject& object) {
            const UUID* id = std::get_if<UUID>(&object);
            if (id && model.recording_ && model.recording_->id == *id)
                model.readTranscript();
        });
    if (environment_.liveText)
        observations_.follow(*environment_.liveText, [this] { showLiveText(); });
    if (environment_.liveDuration)
        observations_.followChanges(*environment_.liveDuration, [this](double) {
            if (isRunning())
                Q_EMIT durationChanged();
        });
}

HistoryDetailModel::~HistoryDetailModel() {
    observation_.end();
    queue_->sync([] {});
}

void HistoryDetailModel::show(const std::optional<HistoryItem>& recording) {
    if (recording == recording_)
        return;
    const bool isOther = !recording || !recording_ || recording->id != recording_->id ||
                         recording->live != recording_->live;
    // Announcing an unchanged note would discard what the user is typing into it.
    const bool isOtherNote = !recording || !recording_ || recording->id != recording_->id ||
                             recording->note != recording_->note;
    recording_ = recording;
    if (isOther) {
        payload_ = {};
        timeline_ = {};
        problem_.clear();
        isLoading_ = recording_.has_value();
        showRows(false);
        Q_EMIT sourceChanged();
        readTranscript();
    }
    if (isOtherNote)
        Q_EMIT noteChanged();
    Q_EMIT recordingChanged();
    Q_EMIT durationChanged();
}

/// Shows what a running session has recognised so far, because its files are not written yet. The
/// text of another program's session is unknown and stays empty.
void HistoryDetailModel::showLiveText() {
    if (!isRunning() || !environment_.liveText)
        return;
    const bool isOwn = environment_.liveRecording() == recording_->id;
    payload_ = HistoryTranscriptPayload::trimmed(isOwn ? **environment_.liveText : "", {});
    isLoading_ = false;
    showRows();
}

void HistoryDetailModel::readTranscript() {
    ++readings_;
    if (isRunning())
        return showLiveText();
    if (recording_)
        spawn(Executor::main(environment_.host), load(*recording_));
}

Task<void> HistoryDetailModel::load(HistoryItem recording) {
    const auto held = lifeline_.held();
    const std::uint64_t reading = readings_;
    const auto queue = queue_;
    RecordingCatalog& catalog = environment_.catalog;
    FileSystem& files = environment_.files;
    ShownFiles found;
    co_await runOn(Executor::queue(environment_.host, queue),
                   [&] { found = readFiles(catalog, files, recording.id); });
    // The window was closed, or another reading has begun.
    if (!*held || readings_ != reading)
        co_return;
    const bool isOtherSource = payload_.sourceText != found.payload.sourceText;
    if (!isLoading_ && !isOtherSource && payload_.bilingualText == found.payload.bilingualText &&
        timeline_ == found.timeline && problem_ == found.problem)
        co_return; // an update would only disturb the reader
    payload_ = std::move(found.payload);
    timeline_ = std::move(found.timeline);
    problem_ = std::move(found.problem);
    isLoading_ = false;
    LogFields fields{{"recordingID", recording.id.text()}};
    fields.add("sentences", std::ssize(timeline_.sentences)).add("error", problem_);
    environment_.logger.event("history.detail.transcriptLoaded", fields);
    showRows();
    if (isOtherSource)
        Q_EMIT sourceChanged();
}

void HistoryDetailModel::showRows(bool isSameRecording) {
    using Content = HistoryTranscriptExportContent;
    const bool isBilingual =
        payload_.presentation(mode_) == HistoryTranscriptPresentation::bilingual;
    HistoryTranscriptExportDocument document;
    document.content = isBilingual ? Content::bilingual : Content::source;
    document.text = isBilingual ? payload_.bilingualText : payload_.sourceText;
    document.sentenceTimings =
        timeline_.sentences.empty() ? timeline_.derivedSentencesFromWords() : timeline_.sentences;
    rows_.show(document, isSameRecording);
    Q_EMIT transcriptChanged();
}

void HistoryDetailModel::setMode(int mode) {
    if (std::exchange(mode_, mode) == mode)
        return;
    showRows();
    Q_EMIT modeChanged();
}

QString HistoryDetailModel::title() const {
    return recording_
               ? QString::fromStdString(recording_->date + " " + recording_->time.substr(0, 5))
               : QString();
}

QString HistoryDetailModel::duration() const {
    return recording_ ? durationText(*recording_, environment_) : QString();
}

QString HistoryDetailModel::note() const {
    return recording_ ? QString::fromStdString(recording_->note) : QString();
}

QString HistoryDetailModel::hint() const {
    if (!recording_ || isLoading_)
        return {};
    if (!problem_.empty())
        return QString::fromStdString(problem_);
    switch (payload_.presentation(mode_)) {
    case HistoryTranscriptPresentation::nothing:
        return isRunning() ? historyText("正在录音。停止字幕后，文字会出现在这里。")
                           : historyText("这条录音没有识别文本。");
    case HistoryTranscriptPresentation::sourceWithoutTranslation:
        if (isRunning())
            break;
        return historyText("这条录音没有保存译文。开启翻译后完成的新录音会在这里显示双语文本。");
    case HistoryTranscriptPresentation::source:
    case HistoryTranscriptPresentation::bilingual:
        break;
    }
    return {};
}

} // namespace tessarune
