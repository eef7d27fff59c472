#pragma once

#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryExportModel.h"
#include "Tessarune/ui/history/HistoryListModel.h"
#include "Tessarune/ui/history/HistoryPlaybackModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>
#include <optional>
#include <string>

namespace tessarune {

/// The history window: a list, the recording that is chosen in it, and what was just done. Main
/// thread; the environment outlives it.
///
/// A deletion waits until it cannot be taken back any more: some seconds, another deletion, or the
/// end of the window.
class HistoryWindowModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tessarune::HistoryListModel* list READ list CONSTANT)
    Q_PROPERTY(tessarune::HistoryDetailModel* detail READ detail CONSTANT)
    Q_PROPERTY(tessarune::HistoryExportModel* exports READ exports CONSTANT)
    Q_PROPERTY(tessarune::HistoryPlaybackModel* playback READ playback CONSTANT)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentRowChanged)
    /// What happened last; empty: it is a while ago.
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY messageChanged)
    /// Why the list is empty, and what to do; empty while it is not.
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY emptyChanged)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY emptyChanged)
    /// The fixed texts of the window.
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit HistoryWindowModel(const HistoryWindowEnvironment& environment);
    ~HistoryWindowModel() override;

    HistoryListModel* list() { return &list_; }
    HistoryDetailModel* detail() { return &detail_; }
    HistoryExportModel* exports() { return &exports_; }
    HistoryPlaybackModel* playback() { return &playback_; }
    QString query() const { return query_; }
    void setQuery(const QString& query);
    int currentRow() const;
    void setCurrentRow(int row);
    QString message() const { return message_; }
    bool canUndo() const { return deleted_.has_value(); }
    QString emptyTitle() const;
    QString emptyText() const;
    QVariantMap texts() const;

    /// Deletes the chosen recording, at first so that it can be taken back.
    Q_INVOKABLE void deleteCurrent();
    Q_INVOKABLE void undo();
    Q_INVOKABLE void dismissMessage();
    Q_INVOKABLE void setNote(const QString& note);
    Q_INVOKABLE void copy(bool withTranslation);

    /// Chooses a recording, if it is listed.
    void select(const UUID& id);

  Q_SIGNALS:
    void queryChanged();
    void currentRowChanged();
    void messageChanged();
    void emptyChanged();

  private:
    void tell(const std::string& message);
    bool mayChange();
    /// False: the recording could not be deleted, which is told.
    bool finishDeletion();
    void listUpdated();

    const HistoryWindowEnvironment& environment_;
    HistoryListModel list_;
    HistoryDetailModel detail_;
    HistoryExportModel exports_;
    HistoryPlaybackModel playback_;
    QString query_;
    std::optional<UUID> current_;
    int lastRow_ = 0; ///< where the chosen recording was listed last
    QString message_;
    std::optional<UUID> deleted_; ///< not listed any more, and still there
    QTimer messageTimer_;
};

} // namespace tessarune
