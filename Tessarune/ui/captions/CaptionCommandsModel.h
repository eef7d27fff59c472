#pragma once

#include "Tessarune/ui/captions/CaptionToolbarModel.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "Tessarune/ui/controls/ListedRows.h"
#include "TessaruneCore/observation/Observations.h"

#include <QKeySequence>
#include <QString>
#include <functional>
#include <vector>

namespace tessarune {

/// A command of the caption window.
struct CaptionCommand {
    std::function<QString()> text;
    std::function<void()> run;
    const ShortcutSetting* shortcut = nullptr;
    std::function<bool()> isEnabled = {}; ///< empty: always
    std::function<bool()> isChecked = {}; ///< empty: never
    bool isFirstOfGroup = false;
    std::function<void()> runByKeys = {}; ///< empty: as `run`
    QKeySequence fixedKeys = {}; ///< used without a `shortcut`; the user cannot change them
    QString source = {}; ///< the name of the sound source that the command selects; empty: none

    /// Compares only the sources: they come and go, while all other commands keep their places.
    bool operator==(const CaptionCommand& other) const { return source == other.source; }
};

/// All commands of the caption window, in the order of its context menu, with the shortcuts of the
/// settings. Each sound source is a command of its own. Main thread; environment and toolbar must
/// outlive it.
class CaptionCommandsModel final : public ListedRows<CaptionCommand> {
    Q_OBJECT
    /// The text that the user has selected in the captions.
    Q_PROPERTY(QString selection MEMBER selection_ NOTIFY selectionChanged)

  public:
    enum Role {
        TextRole = Qt::UserRole,
        /// For a QML `Shortcut`; empty if the command has no keys, or if an enabled command before
        /// it has the same keys.
        KeysRole,
        KeysTextRole, ///< as the user reads them
        EnabledRole,
        CheckedRole,
        /// Whether a line is drawn above the command.
        FirstOfGroupRole,
    };

    CaptionCommandsModel(const CaptionWindowEnvironment& environment,
                         const CaptionToolbarModel& toolbar);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Call when the user chose the command in the menu.
    Q_INVOKABLE void choose(int row) const;
    /// Call when the user pressed the command's keys.
    Q_INVOKABLE void press(int row) const;
    /// Call when the user pressed the button with this name in the toolbar.
    Q_INVOKABLE void pressButton(const QString& name) const;
    void copy(bool withTranslations) const;

  Q_SIGNALS:
    void selectionChanged();

  private:
    std::vector<CaptionCommand> commands() const;
    /// Copies the selected text, or all captions with their translations if none is selected.
    void copySelected() const;
    void clear() const { environment_.commands.clearCaptions(); }
    QKeySequence keysAt(int row) const;
    bool hasKeysOfEarlier(int row) const;
    void sourcesChanged();
    void announceChange();

    const CaptionWindowEnvironment& environment_;
    const CaptionToolbarModel& toolbar_;
    QString selection_;
    Observations observations_;
};

} // namespace tessarune
