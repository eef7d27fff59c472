#pragma once

#include "Tessarune/ui/settings/SettingRowsModel.h"
#include "Tessarune/ui/settings/SettingsWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <vector>

namespace tessarune {

/// The state of the settings window: the shown pane, and the results of a search in all panes. Main
/// thread; the environment must outlive it.
class SettingsWindowModel final : public QObject {
    Q_OBJECT
    /// The panes in order, each a map with "name" and "title".
    Q_PROPERTY(QVariantList panes READ panes CONSTANT)
    Q_PROPERTY(QString pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(QString paneTitle READ paneTitle NOTIFY paneChanged)
    Q_PROPERTY(QString query MEMBER query_ READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY queryChanged)
    Q_PROPERTY(bool foundNothing READ foundNothing NOTIFY queryChanged)
    /// The settings of the shown pane, except those with a view of their own.
    Q_PROPERTY(tessarune::SettingRowsModel* rows READ rows CONSTANT)
    /// The results of the search.
    Q_PROPERTY(tessarune::SettingRowsModel* found READ found CONSTANT)
    /// Why the settings file cannot be read or written; empty if it can be.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    /// The fixed texts of the window.
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit SettingsWindowModel(const SettingsWindowEnvironment& environment);

    QVariantList panes() const;
    QString pane() const;
    void setPane(const QString& name);
    QString paneTitle() const;
    QString query() const { return query_; }
    void setQuery(const QString& query);
    bool isSearching() const;
    bool foundNothing() const { return isSearching() && found_.rowCount() == 0; }
    SettingRowsModel* rows() { return &rows_; }
    SettingRowsModel* found() { return &found_; }
    QString problem() const;
    QVariantMap texts() const;

    Q_INVOKABLE void renewFile();
    Q_INVOKABLE void restoreCaptions();

  Q_SIGNALS:
    void paneChanged();
    void queryChanged();
    void problemChanged();

  private:
    void showPane();

    const SettingsWindowEnvironment& environment_;
    const std::vector<SettingEntry> entries_;
    SettingsPane pane_ = SettingsPane::recognition;
    QString query_;
    SettingRowsModel rows_;
    SettingRowsModel found_;
    Observations observations_;
};

} // namespace tessarune
