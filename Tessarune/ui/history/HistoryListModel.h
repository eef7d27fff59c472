#pragma once

#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/controls/ListedRows.h"
#include "Tessarune/ui/history/HistoryListReader.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// The recordings of the catalog as a list: newest first, by day, filtered by a search, each with
/// its current activity. It follows the catalog and the refinements. Main thread; the disk is read
/// on a queue. The environment must outlive it.
class HistoryListModel final : public ListedRows<HistoryListReader::EntryPtr> {
    Q_OBJECT

  public:
    enum Role {
        DayRole = Qt::UserRole, ///< the heading of its group
        TimeRole,
        TitleRole, ///< its note, or the beginning of its transcript
        DurationRole,
        BilingualRole,
        RunningRole,   ///< whether it is being recorded
        FailedRole,    ///< whether its refinement failed
        StateTextRole, ///< its activity, its failed refinement or its lack of text; may be empty
        ProgressRole,  ///< of its refinement, 0 to 1; negative: no refinement runs
    };

    explicit HistoryListModel(const HistoryWindowEnvironment& environment);
    ~HistoryListModel() override;

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Whether the catalog has not been read yet.
    bool isLoading() const { return isLoading_; }
    /// Why the catalog, or a part of it, cannot be read; empty if it can be.
    const std::string& problem() const { return problem_; }
    /// Whether no recording can be read.
    bool isUnreadable() const { return all_.empty() && !problem_.empty(); }

    /// Lists only recordings that the full-text search finds, or for which all words of `query`
    /// occur in the note, the date, the time or the beginning of the transcript. An empty query
    /// lists all recordings.
    void setQuery(const QString& query);
    /// Hides a recording that is about to be deleted.
    void setHidden(const UUID& id, bool isHidden);

    /// Reads the catalog again.
    void reload();

    const HistoryItem* item(int row) const;
    int rowOf(const UUID& id) const;

  Q_SIGNALS:
    /// Emitted after each update of the rows, even if nothing has changed.
    void updated();

  private:
    enum class State { finished, recording, waiting, refining, failed, blank };

    void follow();
    void awaitMidnight();
    void transcriptChanged(const UUID& id);
    void refinementsChanged();
    Task<void> load();
    void update();
    void search();
    Task<void> find(SearchQuery query);
    bool isListed(const HistoryListReader::Entry& entry) const;
    State stateOf(const HistoryListReader::Entry& entry) const;
    QString stateText(const HistoryListReader::Entry& entry) const;

    const HistoryWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<HistoryListReader> reader_; ///< used only on the queue
    std::vector<HistoryListReader::EntryPtr> all_;
    std::set<UUID> hidden_;
    QStringList words_; ///< of the query, folded
    SearchQuery query_;
    int searches_ = 0; ///< searches so far; only the result of the last is used
    std::unordered_set<UUID> found_;
    std::string problem_;
    bool isLoading_ = true;               ///< until the catalog has been read once
    bool isReloadDue_ = false;            ///< the catalog may have changed since it was read
    bool isReading_ = false;              ///< `load` is running
    HistoryRefinementService::Jobs jobs_; ///< as they are shown
    HistoryRefinementService::Failures failures_;
    std::vector<NotificationCenter::Observation> notifications_;
    Observations observations_;
    DelayedCall midnight_;
    const Lifeline<HistoryListModel> lifeline_{*this};
};

} // namespace tessarune
