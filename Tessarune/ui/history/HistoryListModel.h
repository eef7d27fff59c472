#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAbstractListModel>
#include <QHash>
#include <QString>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// The recordings of the catalog as they are listed: newest first, by day, those that a search
/// leaves. It follows the catalog; changes are told as the smallest ones, so that the list stays
/// where the reader is. Main thread; the environment outlives it.
class HistoryListModel final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// Nothing is known of the catalog yet.
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY loaded)

  public:
    enum Role {
        DayRole = Qt::UserRole, ///< the heading under which it stands
        TimeRole,
        TitleRole, ///< its note, or how it begins
        DurationRole,
        BilingualRole,
        RunningRole, ///< it is being recorded
        EmptyRole,   ///< it has no transcript
        WorkRole,    ///< what is being done with it; empty: nothing
    };

    explicit HistoryListModel(const HistoryWindowEnvironment& environment);
    ~HistoryListModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return rowCount(); }
    bool isLoading() const { return isLoading_; }
    /// Why the catalog cannot be read; empty if it can.
    const std::string& problem() const { return problem_; }

    /// Only those whose note, date or beginning holds all words of `query`, and those that the
    /// search finds by what was said or its translation; all for an empty one.
    void setQuery(const QString& query);
    /// A recording that is about to be deleted is not listed any more.
    void setHidden(const UUID& id, bool isHidden);

    const HistoryItem* item(int row) const;
    int rowOf(const UUID& id) const;
    std::size_t countOfAll() const { return all_.size(); }

  Q_SIGNALS:
    void countChanged();
    void loaded();
    /// The rows were brought up to date.
    void updated();

  private:
    struct Line;

    void reload();
    Task<void> load();
    void update();
    void search();
    Task<void> find(SearchQuery query);
    bool isListed(const HistoryItem& item);
    QString textOf(const HistoryItem& item) const;
    void follow();
    QString workOf(const UUID& id) const;

    const HistoryWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<Line> line_; ///< what returns from the queue looks here whether it is late
    std::vector<HistoryItem> all_;
    std::vector<HistoryItem> shown_;
    std::set<UUID> hidden_;
    QStringList words_;
    SearchQuery query_;
    int searches_ = 0;
    std::unordered_set<UUID> found_; ///< by the last search
    std::string problem_;
    bool isLoading_ = true;
    bool isReloadDue_ = false;
    bool isReading_ = false;
    mutable QHash<QByteArray, QString>
        texts_; ///< how transcripts begin, as far as they were asked for
    std::vector<NotificationCenter::Observation> observations_;
    Observations refinements_;
};

} // namespace tessarune
