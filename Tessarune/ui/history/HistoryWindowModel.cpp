#include "Tessarune/ui/history/HistoryWindowModel.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

constexpr int messageMS = 8000;

QString historyText(std::string_view key) {
    return QString::fromStdString(localized(key));
}

} // namespace

HistoryWindowModel::HistoryWindowModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      list_(environment_),
      detail_(environment_),
      exports_(environment_, detail_, [this](const std::string& message) { tell(message); }),
      playback_(environment_, detail_) {
    connect(&list_, &HistoryListModel::updated, this, &HistoryWindowModel::listUpdated);
    messageTimer_.setInterval(messageMS);
    messageTimer_.setSingleShot(true);
    connect(&messageTimer_, &QTimer::timeout, this, &HistoryWindowModel::dismissMessage);
}

HistoryWindowModel::~HistoryWindowModel() {
    finishDeletion();
}

void HistoryWindowModel::listUpdated() {
    int row = current_ ? list_.rowOf(*current_) : -1;
    if (row < 0) // it is gone, or nothing was chosen yet: its neighbour
        row = std::min(lastRow_, list_.count() - 1);
    lastRow_ = std::max(row, 0);
    const HistoryItem* const item = list_.item(row);
    current_ = item ? std::optional(item->id) : std::nullopt;
    detail_.show(item ? std::optional(*item) : std::nullopt);
    Q_EMIT currentRowChanged();
    Q_EMIT emptyChanged();
}

int HistoryWindowModel::currentRow() const {
    return current_ ? list_.rowOf(*current_) : -1;
}

void HistoryWindowModel::setCurrentRow(int row) {
    const HistoryItem* const item = list_.item(row);
    if (!item || current_ == item->id)
        return;
    current_ = item->id;
    listUpdated();
}

void HistoryWindowModel::select(const UUID& id) {
    setCurrentRow(list_.rowOf(id));
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
    finishDeletion(); // may have something to say
    Q_EMIT messageChanged();
}

bool HistoryWindowModel::mayChange() {
    const std::string problem = environment_.changeProblem();
    if (!problem.empty())
        tell(problem);
    return problem.empty();
}

void HistoryWindowModel::deleteCurrent() {
    const auto& recording = detail_.recording();
    if (!recording || !mayChange())
        return;
    if (recording->live) {
        tell(localized("正在录音，停止后才能删除。"));
        return;
    }
    if (!finishDeletion())
        return; // one thing at a time is told
    const UUID id = recording->id;
    const std::string title =
        recording->note.empty() ? recording->date + " " + recording->time : recording->note;
    deleted_ = id;
    list_.setHidden(id, true);
    tell(localized("已删除“%@”", {title}));
}

void HistoryWindowModel::undo() {
    if (!deleted_)
        return;
    const UUID id = *std::exchange(deleted_, std::nullopt);
    list_.setHidden(id, false);
    select(id);
    dismissMessage();
}

/// It stays hidden: the catalog says soon enough that it is gone.
bool HistoryWindowModel::finishDeletion() {
    if (!deleted_)
        return true;
    const UUID id = *std::exchange(deleted_, std::nullopt);
    if (environment_.catalog.deleteRecording(id))
        return true;
    list_.setHidden(id, false);
    tell(localized("录音无法删除。"));
    return false;
}

void HistoryWindowModel::setNote(const QString& note) {
    const auto& recording = detail_.recording();
    const std::string text = note.trimmed().toStdString();
    if (!recording || recording->note == text || !mayChange())
        return;
    if (!environment_.catalog.setNote(text, recording->id))
        tell(localized("备注无法保存。"));
}

void HistoryWindowModel::copy(bool withTranslation) {
    const HistoryTranscriptPayload& payload = detail_.payload();
    environment_.copy(withTranslation && detail_.hasTranslation() ? payload.bilingualText
                                                                  : payload.sourceText);
    tell(localized("已复制"));
}

QString HistoryWindowModel::emptyTitle() const {
    if (list_.isLoading() || list_.count() > 0)
        return {};
    if (!list_.problem().empty())
        return historyText("无法读取历史记录");
    return query_.trimmed().isEmpty() ? historyText("还没有录音") : historyText("没有找到");
}

QString HistoryWindowModel::emptyText() const {
    if (emptyTitle().isEmpty())
        return {};
    if (!list_.problem().empty())
        return QString::fromStdString(list_.problem());
    return query_.trimmed().isEmpty()
               ? historyText("开始字幕后，每次会话的录音、文字和译文都会保存在这里。")
               : historyText("换一个词，或清除搜索。");
}

QVariantMap HistoryWindowModel::texts() const {
    return {{"title", historyText("历史记录")},
            {"search", historyText("搜索历史记录")},
            {"source", historyText("原文")},
            {"bilingual", historyText("双语")},
            {"running", historyText("正在录音")},
            {"blank", historyText("没有文字")},
            {"note", historyText("添加备注")},
            {"copyBoth", historyText("复制原文和译文")},
            {"copySource", historyText("复制原文")},
            {"export", historyText("导出")},
            {"exportTo", historyText("导出到…")},
            {"exporting", historyText("正在导出…")},
            {"cancel", historyText("取消")},
            {"delete", historyText("删除")},
            {"undo", historyText("撤销")},
            {"play", historyText("播放")},
            {"pause", historyText("暂停")},
            {"place", historyText("播放位置")},
            {"rate", historyText("播放速度")},
            {"repeat", historyText("重复这一句")},
            {"playSentence", historyText("播放这一句")},
            {"dismiss", historyText("知道了")},
            {"choose", historyText("从左侧选择一条录音")}};
}

} // namespace tessarune
