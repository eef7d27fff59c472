#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAbstractListModel>
#include <QVariantMap>
#include <string_view>
#include <vector>

namespace tessarune {

/// The keyboard shortcuts, each with its conflicts. Main thread; the settings must outlive it.
class ShortcutsModel final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    enum Role {
        TitleRole = Qt::UserRole,
        KeysTextRole,  ///< empty: switched off
        ConflictRole,  ///< a sentence that names a command with the same keys; empty: none
        RecordingRole, ///< whether the next keys become the shortcut
        ProblemRole,   ///< the fault of the pressed keys or of the stored shortcut; empty: none
        ChangedRole,
    };

    explicit ShortcutsModel(AppSettings& settings);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    QVariantMap texts() const;

    /// Makes the next key press the row's shortcut.
    Q_INVOKABLE void record(int row);
    Q_INVOKABLE void cancel();
    /// Sets the keys of the row that is being recorded, and ends the recording. Escape and keys
    /// that cannot be a shortcut end it without a change; modifiers alone are ignored.
    Q_INVOKABLE void press(int key, int modifiers, quint32 scanCode);
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
    int recording_ = -1; ///< the row whose keys are being recorded; -1: none
    int refused_ = -1;   ///< the row whose last keys cannot be a shortcut; -1: none
    Observations observations_;
};

} // namespace tessarune
