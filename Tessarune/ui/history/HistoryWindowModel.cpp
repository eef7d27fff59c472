#include "Tessarune/ui/history/HistoryWindowModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

constexpr int messageMS = 8000;

} // namespace

HistoryWindowModel::HistoryWindowModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.changes", QueuePriority::standard)),
      list_(environment_),
      detail_(environment_),
      exports_(environment_, detail_, [this](const std::string& message) { tell(message); }),
      playback_(environment_, detail_),
      refinement_(
          environment_, detail_, [this] { return holdDataFolder(); },
          [this](const std::string& message) { tell(message); }),
      imports_(environment_, [this] { return holdDataFolder(); }),
      card_(environment_, [this] { playback_.pause(); }),
      words_(environment_, detail_, card_),
      vocabulary_(*environment_.vocabulary, card_),
      usage_(environment_) {
    connect(&list_, &HistoryListModel::updated, this, &HistoryWindowModel::listUpdated);
    observations_.follow(environment_.vocabulary->problem(), [this] {
        if (const std::string& problem = *environment_.vocabulary->problem(); !problem.empty())
            tell(localized("单词标记无法保存：%@", {problem}));
    });
    messageTimer_.setInterval(messageMS);
    messageTimer_.setSingleShot(true);
    connect(&messageTimer_, &QTimer::timeout, this, &HistoryWindowModel::dismissMessage);
    selection_ = lifeline_.observe(
        environment_.notifications, NotificationName::historyImportSelectRecording,
        environment_.host, [](HistoryWindowModel& model, const NotificationObject& object) {
            const UUID* const id = std::get_if<UUID>(&object);
            if (id && !model.draft_) // a user who is writing a note stays at the note's recording
                model.select(*id);
        });
}

HistoryWindowModel::~HistoryWindowModel() {
    queue_->sync([this] {
        for (const Deletion& deletion : deletions_)
            environment_.catalog.deleteRecording(deletion.id);
    });
}

void HistoryWindowModel::listUpdated() {
    if (wanted_ && list_.rowOf(*wanted_) >= 0) {
        current_ = std::exchange(wanted_, std::nullopt);
        setPage(Page::recording);
    }
    int row = current_ ? list_.rowOf(*current_) : -1;
    if (row < 0) // no recording was chosen, or it is no longer listed: choose the nearest row
        row = std::min(lastRow_, list_.count() - 1);
    lastRow_ = std::max(row, 0);
    const HistoryItem* const item = list_.item(row);
    current_ = item ? std::optional(item->id) : std::nullopt;
    if (draft_ && detail_.recording() && detail_.recording()->id != current_)
        setNote(*std::exchange(draft_, std::nullopt));
    const bool isShown = detail_.recording() && detail_.recording()->id == current_;
    detail_.show(item ? std::optional(*item) : std::nullopt);
    if (isShown && !detail_.hasText()) // another program may have saved the text meanwhile
        detail_.readTranscript();
    Q_EMIT currentRowChanged();
    Q_EMIT emptyChanged();
}

int HistoryWindowModel::currentRow() const {
    return current_ ? list_.rowOf(*current_) : -1;
}

void HistoryWindowModel::setCurrentRow(int row) {
    const HistoryItem* const item = list_.item(row);
    if (!item)
        return;
    setPage(Page::recording);
    if (current_ == item->id)
        return;
    wanted_.reset();
    current_ = item->id;
    listUpdated();
}

void HistoryWindowModel::setPage(Page page) {
    if (std::exchange(page_, page) == page)
        return;
    card_.close();
    usage_.setOpen(page == Page::usage);
    Q_EMIT pageChanged();
}

void HistoryWindowModel::refresh() {
    list_.reload();
    detail_.readTranscript();
    VocabularyStore& vocabulary = *environment_.vocabulary;
    vocabulary.refresh();
    const std::string problem = vocabulary.readingProblem();
    if (std::exchange(vocabularyProblem_, problem) != problem && !problem.empty())
        tell(problem);
}

void HistoryWindowModel::select(const UUID& id) {
    wanted_ = id;
    listUpdated();
}

void HistoryWindowModel::setQuery(const QString& query) {
    if (std::exchange(query_, query) == query)
        return;
    list_.setQuery(query);
    Q_EMIT queryChanged();
}

void HistoryWindowModel::tell(const std::string& message) {
    message_ = QString::fromStdString(message);
    messageTimer_.start();
    Q_EMIT messageChanged();
}

void HistoryWindowModel::dismissMessage() {
    messageTimer_.stop();
    message_.clear();
    finishDeletions();
}

/// Returns null, and tells the user why, if recordings cannot be changed now.
DataFolderHold HistoryWindowModel::holdDataFolder() {
    DataFolderLease lease = environment_.leaseDataFolder();
    if (!lease.hold)
        tell(lease.problem);
    return std::move(lease.hold);
}

void HistoryWindowModel::deleteCurrent() {
    const auto& recording = detail_.recording();
    if (!recording)
        return;
    DataFolderHold hold = holdDataFolder();
    if (!hold)
        return;
    if (recording->live) {
        tell(localized("正在录音，停止后才能删除。"));
        return;
    }
    const UUID id = recording->id;
    deletions_.push_back({id, titleOf(*recording), std::move(hold)});
    list_.setHidden(id, true);
    tellDeletions();
}

void HistoryWindowModel::tellDeletions() {
    const std::string& last = deletions_.back().title;
    tell(deletions_.size() == 1 ? localized("已删除“%@”", {last})
                                : localized("已删除“%@”和另外 %lld 条录音",
                                            {last, std::to_string(deletions_.size() - 1)}));
}

void HistoryWindowModel::undo() {
    if (deletions_.empty())
        return;
    const UUID id = deletions_.back().id;
    deletions_.pop_back();
    list_.setHidden(id, false);
    select(id);
    if (deletions_.empty())
        dismissMessage();
    else
        tellDeletions();
}

/// Deletes the hidden recordings, which stay hidden. A recording is listed again only if it cannot
/// be deleted.
void HistoryWindowModel::finishDeletions() {
    for (Deletion& deletion : std::exchange(deletions_, {})) {
        const auto failed = [id = deletion.id](HistoryWindowModel& model) {
            model.list_.setHidden(id, false);
            model.tell(localized("录音无法删除。"));
        };
        change(
            std::move(deletion.hold),
            [&catalog = environment_.catalog, id = deletion.id] {
                return catalog.deleteRecording(id);
            },
            failed);
    }
    Q_EMIT messageChanged(); // nothing can be undone any more
}

void HistoryWindowModel::finishPending() {
    finishDeletions();
    queue_->sync([] {});
}

/// Runs `step` on the queue, because each change writes the whole catalog, which takes a while if
/// the catalog is long. `step` runs even if this model is destroyed first. If `step` returns false
/// and the model still exists, `failed` is called on the main queue.
void HistoryWindowModel::change(DataFolderHold hold, std::function<bool()> step,
                                std::function<void(HistoryWindowModel&)> failed) {
    queue_->async([&host = environment_.host, step = std::move(step), hold = std::move(hold),
                   report = lifeline_.calling(std::move(failed))] {
        if (!step())
            host.post(report);
    });
}

void HistoryWindowModel::setNote(const QString& note) {
    draft_.reset();
    const auto& recording = detail_.recording();
    const std::string text = note.trimmed().toStdString();
    if (!recording || recording->note == text)
        return;
    DataFolderHold hold = holdDataFolder();
    if (!hold)
        return;
    change(
        std::move(hold),
        [&catalog = environment_.catalog, text, id = recording->id] {
            return catalog.setNote(text, id);
        },
        [](HistoryWindowModel& model) { model.tell(localized("备注无法保存。")); });
}

void HistoryWindowModel::copy(bool withTranslation) {
    const HistoryTranscriptPayload& payload = detail_.payload();
    const bool isBilingual = withTranslation && detail_.hasTranslation();
    environment_.copy(isBilingual ? payload.bilingualText : payload.sourceText);
    tell(withTranslation && !isBilingual ? localized("已复制原文；这条录音没有保存译文。")
                                         : localized("已复制"));
}

QString HistoryWindowModel::emptyTitle() const {
    if (list_.isLoading() || list_.count() > 0)
        return {};
    if (list_.isUnreadable())
        return historyText("无法读取历史记录");
    return query_.trimmed().isEmpty() ? historyText("还没有录音") : historyText("没有找到");
}

bool HistoryWindowModel::hasNoRecordings() const {
    return !emptyTitle().isEmpty() && !list_.isUnreadable() && query_.trimmed().isEmpty();
}

/// If no recording can be read, the empty list says why.
QString HistoryWindowModel::listProblem() const {
    return list_.isUnreadable() ? QString() : QString::fromStdString(list_.problem());
}

QString HistoryWindowModel::emptyText() const {
    if (emptyTitle().isEmpty())
        return {};
    if (list_.isUnreadable())
        return QString::fromStdString(list_.problem());
    return query_.trimmed().isEmpty() ? historyText("开始字幕后，每次会话的录音、文字和译文都会保存"
                                                    "在这里。也可以导入声音或视频文件。")
                                      : historyText("换一个词，或清除搜索。");
}

} // namespace tessarune
