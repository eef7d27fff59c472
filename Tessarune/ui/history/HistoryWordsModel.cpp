#include "Tessarune/ui/history/HistoryWordsModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// Indexes into HistoryWordsModel::kinds().
enum WordKind { allWords, unknownWords, favoriteWords, coreWords };

std::string otherForms(const HistoryWordStats::VocabularyEntry& entry) {
    std::string forms;
    for (const auto& form : entry.forms) {
        if (form.token != entry.lemma)
            forms += (forms.empty() ? "" : ", ") + form.token;
    }
    return forms;
}

} // namespace

HistoryWordsModel::HistoryWordsModel(const HistoryWindowEnvironment& environment,
                                     HistoryDetailModel& detail, WordCardModel& card)
    : WordListModel(*environment.vocabulary, card),
      environment_(environment),
      detail_(detail),
      core_(store().coreWords()->begin(), store().coreWords()->end()) {
    connect(&detail_, &HistoryDetailModel::sourceChanged, this, [this] {
        stats_ = nullptr;
        placedWord_.clear();
        ++counts_;
        update();
        countIfNeeded();
    });
}

void HistoryWordsModel::setOpen(bool isOpen) {
    if (std::exchange(isOpen_, isOpen) == isOpen)
        return;
    Q_EMIT openChanged();
    countIfNeeded();
}

void HistoryWordsModel::countIfNeeded() {
    if (isOpen_ && !stats_ && detail_.recording() && detail_.hasText())
        spawn(Executor::main(environment_.host),
              count(*detail_.recording(), detail_.payload().sourceText));
}

Task<void> HistoryWordsModel::count(HistoryItem recording, std::string text) {
    const auto held = lifeline_.held();
    const std::uint64_t number = ++counts_;
    Task<HistoryWordStatsService::Stats> counting = environment_.wordStatistics.stats(
        recording.id, std::move(text), 0, recording.durationSeconds);
    HistoryWordStatsService::Stats counted = co_await counting;
    if (!*held || counts_ != number)
        co_return;
    stats_ = std::move(counted);
    update();
}

int HistoryWordsModel::nextPlace(const QString& word) {
    if (!stats_)
        return -1;
    const auto& entries = stats_->vocabularyEntries;
    const auto entry =
        std::ranges::find(entries, word.toStdString(), &HistoryWordStats::VocabularyEntry::lemma);
    if (entry == entries.end() || entry->sentenceIndices.empty())
        return -1;
    place_ = std::exchange(placedWord_, word) == word ? place_ + 1 : 0;
    return entry->sentenceIndices[place_ % entry->sentenceIndices.size()];
}

std::vector<ListedWord> HistoryWordsModel::words() const {
    std::vector<ListedWord> all;
    if (!stats_)
        return all;
    const Marks marked = marks();
    for (const auto& entry : stats_->vocabularyEntries) {
        const bool isKnown = marked.known.contains(entry.lemma);
        const bool isFavorite = marked.favorites.contains(entry.lemma);
        if ((kind() == unknownWords && isKnown) || (kind() == favoriteWords && !isFavorite) ||
            (kind() == coreWords && !core_.contains(entry.lemma)))
            continue;
        all.push_back({entry.lemma, otherForms(entry), entry.count, isKnown, isFavorite});
    }
    return all;
}

QStringList HistoryWordsModel::kinds() const {
    return {historyText("全部"), historyText("还不认识"), historyText("收藏"),
            historyText("核心词")};
}

QString HistoryWordsModel::summary() const {
    if (!stats_)
        return {};
    return historyText(
        "共 %lld 个词，不同的 %lld 个，原形 %lld 个，%lld 句",
        {std::to_string(stats_->tokenCount), std::to_string(stats_->uniqueTokenCount),
         std::to_string(stats_->vocabularyCount), std::to_string(stats_->sentenceCount)});
}

QString HistoryWordsModel::emptyTitle() const {
    if (WordListModel::count() > 0)
        return {};
    if (!detail_.hasText())
        return historyText("没有可以统计的文字");
    if (!stats_)
        return historyText("正在统计…");
    return stats_->vocabularyEntries.empty() ? historyText("没有可以统计的单词")
                                             : historyText("没有这样的单词");
}

QString HistoryWordsModel::emptyText() const {
    if (WordListModel::count() > 0 || !stats_ || stats_->vocabularyEntries.empty())
        return {};
    return isSearching() ? historyText("换一个词，或清除搜索。")
                         : historyText("选择“全部”可以看到其余的单词。");
}

} // namespace tessarune
