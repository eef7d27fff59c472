#include "Tessarune/ui/history/WordListModel.h"

#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

WordListModel::WordListModel(VocabularyStore& store, WordCardModel& card)
    : store_(store), card_(card) {
    observations_.follow(store_.masteredWords(), [this] { update(); });
    observations_.follow(store_.favoriteWords(), [this] { update(); });
}

void WordListModel::setKind(int kind) {
    if (std::exchange(kind_, kind) != kind)
        update();
}

void WordListModel::setQuery(const QString& query) {
    if (std::exchange(query_, query) != query)
        update();
}

void WordListModel::update() {
    const std::string wanted = Text::lowercased(Text::trimmed(query_.toStdString()));
    std::vector<ListedWord> now;
    for (ListedWord& word : words()) {
        if (word.word.find(wanted) != std::string::npos ||
            word.forms.find(wanted) != std::string::npos)
            now.push_back(std::move(word));
    }
    show(std::move(now), [](const ListedWord& a, const ListedWord& b) { return a.word == b.word; });
    Q_EMIT changed();
}

WordListModel::Marks WordListModel::marks() const {
    const VocabularyStore::Words& known = *store_.masteredWords();
    const VocabularyStore::Words& favorites = *store_.favoriteWords();
    return {{known.begin(), known.end()}, {favorites.begin(), favorites.end()}};
}

void WordListModel::choose(int row) {
    const ListedWord* const word = at(row);
    card_.show(word ? word->word : std::string());
}

void WordListModel::toggleKnown(int row) {
    const ListedWord* const found = at(row);
    if (!found)
        return;
    const ListedWord word = *found; // a copy: the change replaces the rows
    if (word.isKnown)
        store_.removeMastered(word.word);
    else
        store_.markMastered(word.word);
}

void WordListModel::toggleFavorite(int row) {
    const ListedWord* const found = at(row);
    if (!found)
        return;
    const ListedWord word = *found; // a copy: the change replaces the rows
    if (word.isFavorite)
        store_.removeFavorite(word.word);
    else
        store_.addFavorite(word.word);
}

QVariant WordListModel::data(const QModelIndex& index, int role) const {
    const ListedWord* const word = at(index.row());
    if (!word)
        return {};
    switch (role) {
    case WordRole:
        return QString::fromStdString(word->word);
    case FormsRole:
        return QString::fromStdString(word->forms);
    case CountRole:
        return word->count > 0 ? QString::number(word->count) : QString();
    case KnownRole:
        return word->isKnown;
    case FavoriteRole:
        return word->isFavorite;
    default:
        return {};
    }
}

QHash<int, QByteArray> WordListModel::roleNames() const {
    return {{WordRole, "word"},
            {FormsRole, "forms"},
            {CountRole, "uses"},
            {KnownRole, "known"},
            {FavoriteRole, "favorite"}};
}

} // namespace tessarune
