#pragma once

#include "Tessarune/history/UsageStatistics.h"
#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/controls/ListedRows.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// The listening time, the sessions and the words by day, week or month in the computer's time
/// zone, as a chart with one row per period. The catalog is read only while the page is open. Main
/// thread; the disk is read on a queue. The environment must outlive it.
class UsageModel final : public ListedRows<UsagePeriod> {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(bool isOpen READ isOpen WRITE setOpen NOTIFY openChanged)
    /// The periods to choose from, and the index of the chosen one.
    Q_PROPERTY(QStringList periods READ periods CONSTANT)
    Q_PROPERTY(int period READ period WRITE setPeriod NOTIFY changed)
    /// The measures to choose from, and the index of the drawn one.
    Q_PROPERTY(QStringList measures READ measures CONSTANT)
    Q_PROPERTY(int measure READ measure WRITE setMeasure NOTIFY changed)
    /// The total of each measure over all time, in the order of `measures`.
    Q_PROPERTY(QStringList totals READ totals NOTIFY changed)
    /// The value at the top of the chart.
    Q_PROPERTY(QString scale READ scale NOTIFY changed)
    /// The row that the chart shows first: the last one with a session that is not in the future;
    /// if all are, the last row. -1 without rows.
    Q_PROPERTY(int latest READ latest NOTIFY changed)
    /// A message if the words of some recordings are not counted; empty if all are.
    Q_PROPERTY(QString uncounted READ uncounted NOTIFY changed)
    /// The texts in place of the chart; empty while there is a chart, and until the catalog has
    /// been read.
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)

  public:
    enum Role {
        FractionRole = Qt::UserRole, ///< of the scale, 0 to 1
        LabelRole,                   ///< below the bar: the day or the month
        GroupRole,                   ///< the month or year, for its first period; else empty
        NameRole,                    ///< the period in words
        ValueRole,                   ///< all figures of the period in words
    };

    explicit UsageModel(const HistoryWindowEnvironment& environment);
    ~UsageModel() override;

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    bool isOpen() const { return isOpen_; }
    void setOpen(bool isOpen);
    QStringList periods() const;
    int period() const { return static_cast<int>(kind_); }
    void setPeriod(int period);
    QStringList measures() const;
    int measure() const { return measure_; }
    void setMeasure(int measure);
    QStringList totals() const;
    QString scale() const;
    int latest() const { return latest_; }
    QString uncounted() const;
    QString emptyTitle() const;
    QString emptyText() const;

  Q_SIGNALS:
    void openChanged();
    void changed();

  private:
    void readIfNeeded();
    Task<void> read();
    void update(std::vector<UsagePeriod> periods);
    void updateScale();
    double valueOf(const UsagePeriod& period) const;
    bool beginsGroup(int row) const;

    const HistoryWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::vector<UsageStatistics::Session> sessions_;
    UsagePeriod total_;
    std::string problem_;
    double maximum_ = 0; ///< of the measure, over all periods
    int latest_ = -1;
    UsagePeriodKind kind_ = UsagePeriodKind::day;
    int measure_ = 0;
    bool isOpen_ = false;
    bool isDue_ = true;      ///< the catalog has not been read since it changed
    bool isReading_ = false; ///< `read` is running
    bool isRead_ = false;    ///< the catalog has been read at least once
    std::vector<NotificationCenter::Observation> observations_;
    const Lifeline<UsageModel> lifeline_{*this};
};

} // namespace tessarune
