#include "Tessarune/ui/history/HistoryDetailModel.h"

#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

/// What the files of a recording hold.
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

struct HistoryDetailModel::Line {
    HistoryDetailModel* model;
    std::uint64_t token = 0;
};

HistoryDetailModel::HistoryDetailModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.detail", QueuePriority::standard)),
      line_(std::make_shared<Line>(Line{this})) {
    observation_ = environment_.notifications.observe(
        NotificationName::recordingTranscriptDidUpdate,
        [&host = environment_.host, line = std::weak_ptr(line_)](const NotificationObject& object) {
            host.post([line, object] {
                const auto still = line.lock();
                const UUID* id = std::get_if<UUID>(&object);
                if (still && still->model && id && still->model->recording_ &&
                    still->model->recording_->id == *id)
                    still->model->readTranscript();
            });
        });
}

HistoryDetailModel::~HistoryDetailModel() {
    observation_.end();
    line_->model = nullptr;
    queue_->sync([] {});
}

void HistoryDetailModel::show(const std::optional<HistoryItem>& recording) {
    if (recording == recording_)
        return;
    const bool isOther = !recording || !recording_ || recording->id != recording_->id ||
                         recording->live != recording_->live;
    recording_ = recording;
    if (isOther) {
        payload_ = {};
        timeline_ = {};
        problem_.clear();
        isLoading_ = recording_.has_value();
        showRows();
        readTranscript();
    }
    Q_EMIT recordingChanged();
}

void HistoryDetailModel::readTranscript() {
    ++line_->token;
    if (recording_)
        spawn(Executor::main(environment_.host), load(*recording_));
}

Task<void> HistoryDetailModel::load(HistoryItem recording) {
    const auto line = line_;
    const std::uint64_t token = line->token;
    const auto queue = queue_;
    RecordingCatalog& catalog = environment_.catalog;
    FileSystem& files = environment_.files;
    ShownFiles found;
    co_await runOn(Executor::queue(environment_.host, queue),
                   [&] { found = readFiles(catalog, files, recording.id); });
    // Another recording was chosen, or the window has gone.
    if (!line->model || line->token != token)
        co_return;
    payload_ = std::move(found.payload);
    timeline_ = std::move(found.timeline);
    problem_ = std::move(found.problem);
    isLoading_ = false;
    showRows();
}

void HistoryDetailModel::showRows() {
    using Content = HistoryTranscriptExportContent;
    const bool isBilingual =
        payload_.presentation(mode_) == HistoryTranscriptPresentation::bilingual;
    rows_.show({{},
                {},
                isBilingual ? Content::bilingual : Content::source,
                isBilingual ? payload_.bilingualText : payload_.sourceText,
                timeline_.sentences.empty() ? timeline_.derivedSentencesFromWords()
                                            : timeline_.sentences});
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
    return recording_ ? QString::fromStdString(recording_->dur) : QString();
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
        return QString::fromStdString(isRunning()
                                          ? localized("正在录音。停止字幕后，文字会出现在这里。")
                                          : localized("这条录音没有识别文本。"));
    case HistoryTranscriptPresentation::sourceWithoutTranslation:
        return QString::fromStdString(
            localized("这条录音没有保存译文。开启翻译后完成的新录音会在这里显示双语文本。"));
    case HistoryTranscriptPresentation::source:
    case HistoryTranscriptPresentation::bilingual:
        break;
    }
    return {};
}

} // namespace tessarune
