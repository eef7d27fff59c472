#pragma once

#include "Tessarune/ui/controls/ListedRows.h"
#include "Tessarune/ui/history/WordCardModel.h"
#include "Tessarune/vocabulary/VocabularyStore.h"
#include "TessaruneCore/observation/Observations.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// A word of a list, and how the user marked it.
struct ListedWord {
    std::string word;
    std::string forms; ///< its other forms in the recording; may be empty
    int count = 0;     ///< how often it occurs; 0 in a list without counts
    bool isKnown = false;
    bool isFavorite = false;

    bool operator==(const ListedWord&) const = default;
};

/// A list of words, filtered by a search and by a kind. Each word can be marked as known and as a
/// favourite, and shown on the card. Main thread; store and card must outlive it.
class WordListModel : public ListedRows<ListedWord> {
    Q_OBJECT
    /// The kinds of words to choose from, and the index of the chosen one.
    Q_PROPERTY(QStringList kinds READ kinds CONSTANT)
    Q_PROPERTY(int kind READ kind WRITE setKind NOTIFY changed)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY changed)
    /// A summary in one line.
    Q_PROPERTY(QString summary READ summary NOTIFY changed)
    /// Why the list is empty, and what to do about it; empty while it has rows.
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)

  public:
    enum Role {
        WordRole = Qt::UserRole,
        FormsRole,
        CountRole, ///< as text; empty in a list without counts
        KnownRole,
        FavoriteRole
    };

    WordListModel(VocabularyStore& store, WordCardModel& card);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    virtual QStringList kinds() const = 0;
    int kind() const { return kind_; }
    void setKind(int kind);
    QString query() const { return query_; }
    void setQuery(const QString& query);
    virtual QString summary() const = 0;
    virtual QString emptyTitle() const = 0;
    virtual QString emptyText() const = 0;

    /// Shows the word on the card; closes the card if there is no such row.
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void toggleKnown(int row);
    Q_INVOKABLE void toggleFavorite(int row);

  Q_SIGNALS:
    void changed();

  protected:
    /// All words of the chosen kind, in order; the search has not filtered them yet.
    virtual std::vector<ListedWord> words() const = 0;
    void update();
    /// The words that the user marked, for quick look-up.
    struct Marks {
        std::unordered_set<std::string> known;
        std::unordered_set<std::string> favorites;
    };
    Marks marks() const;
    bool isSearching() const { return !query_.trimmed().isEmpty(); }
    VocabularyStore& store() const { return store_; }

  private:
    VocabularyStore& store_;
    WordCardModel& card_;
    int kind_ = 0;
    QString query_;
    Observations observations_;
};

} // namespace tessarune
