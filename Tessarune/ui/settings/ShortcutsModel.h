#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAbstractListModel>
#include <QKeySequence>
#include <QVariantMap>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The keyboard shortcuts, each with its conflicts. Main thread; the settings outlive it.
class ShortcutsModel final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    enum Role {
        TitleRole = Qt::UserRole,
        AboutRole,
        KeysTextRole,  ///< empty: switched off
        ConflictRole,  ///< who has the same keys, as a sentence; empty: nobody
        RecordingRole, ///< the next keys are taken
        ProblemRole,
        ChangedRole,
    };

    explicit ShortcutsModel(AppSettings& settings);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    QVariantMap texts() const;

    /// The next key press becomes the row's shortcut.
    Q_INVOKABLE void record(int row);
    Q_INVOKABLE void cancel();
    /// Modifiers alone are ignored, Escape changes nothing.
    Q_INVOKABLE void press(int key, int modifiers);
    Q_INVOKABLE void clear(int row);
    Q_INVOKABLE void restore(int row);
    Q_INVOKABLE void restoreAll();

  private:
    struct Row {
        std::string_view title; ///< localisation key
        ShortcutSetting& shortcut;
    };

    void announceAll();
    QString conflictOf(int row) const;

    AppSettings& settings_;
    const std::vector<Row> rows_;
    int recording_ = -1;
    int refused_ = -1; ///< the row whose last keys cannot be had
    Observations observations_;
};

} // namespace tessarune
