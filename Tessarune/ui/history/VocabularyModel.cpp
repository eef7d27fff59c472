#include "Tessarune/ui/history/VocabularyModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"

namespace tessarune {

namespace {

/// Indexes into VocabularyModel::kinds().
enum VocabularyKind { favorites, known, wordsToLearn };

} // namespace

VocabularyModel::VocabularyModel(VocabularyStore& store, WordCardModel& card)
    : WordListModel(store, card) {
    update();
}

std::vector<ListedWord> VocabularyModel::words() const {
    const Marks marked = marks();
    const VocabularyStore::Words& listed = kind() == favorites ? *store().favoriteWords()
                                           : kind() == known   ? *store().masteredWords()
                                                               : *store().coreWords();
    std::vector<ListedWord> all;
    for (const std::string& word : listed) {
        const bool isKnown = marked.known.contains(word);
        if (kind() != wordsToLearn || !isKnown)
            all.push_back({.word = word,
                           .forms = {},
                           .isKnown = isKnown,
                           .isFavorite = marked.favorites.contains(word)});
    }
    return all;
}

QStringList VocabularyModel::kinds() const {
    return {historyText("收藏"), historyText("已认识"), historyText("待学的核心词")};
}

QString VocabularyModel::summary() const {
    return historyText("收藏 %lld 个，已认识 %lld 个",
                       {std::to_string(store().favoriteWords()->size()),
                        std::to_string(store().masteredWords()->size())});
}

double VocabularyModel::progress() const {
    const auto all = static_cast<double>(store().coreWords()->size());
    return all > 0 ? static_cast<double>(store().masteredCoreWords()) / all : 0;
}

QString VocabularyModel::progressText() const {
    return historyText(
        "核心词：已认识 %lld 个，共 %lld 个",
        {std::to_string(store().masteredCoreWords()), std::to_string(store().coreWords()->size())});
}

bool VocabularyModel::canRemove() const {
    return kind() != wordsToLearn;
}

void VocabularyModel::remove(int row) {
    const ListedWord* const found = at(row);
    if (!found || !canRemove())
        return;
    const std::string word = found->word; // a copy: the change replaces the rows
    if (kind() == favorites)
        store().removeFavorite(word);
    else
        store().removeMastered(word);
}

QString VocabularyModel::emptyTitle() const {
    if (count() > 0)
        return {};
    if (isSearching())
        return historyText("没有找到");
    return kind() == favorites ? historyText("还没有收藏的单词")
           : kind() == known   ? historyText("还没有认识的单词")
                               : historyText("核心词都认识了");
}

QString VocabularyModel::emptyText() const {
    if (count() > 0)
        return {};
    if (isSearching())
        return historyText("换一个词，或清除搜索。");
    return canRemove() ? historyText("打开一条录音的单词统计，把单词标为收藏或认识。") : QString();
}

} // namespace tessarune
