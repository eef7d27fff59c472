#pragma once

#include "Tessarune/ui/settings/SettingEntries.h"
#include "TessaruneCore/host/Host.h"

#include <QAbstractListModel>
#include <functional>
#include <optional>
#include <vector>

namespace tessarune {

/// Lists settings for a pane or a search result. A row shows the current value, also after another
/// pane or program has changed it. Main thread; host and settings must outlive the model.
class SettingRowsModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum Role {
        TitleRole = Qt::UserRole,
        AboutRole,
        SectionRole, ///< empty: the same as in the row above
        ControlRole, ///< "toggle", "choice", "number", "color", "text" or "elsewhere"
        ValueRole,
        ValueTextRole,
        ChoicesRole,
        CurrentRole, ///< index among the choices; -1: none of them
        FromRole,
        ToRole,
        StepRole,
        ChangedRole,   ///< differs from the default, or is invalid
        AvailableRole, ///< whether the setting has an effect now
        ProblemRole,   ///< the fault of the stored or the typed value; empty: none
        PaneRole,
    };

    /// The headings of groups of rows: sections in a pane, panes in a search result.
    enum class Headings { sections, panes };

    explicit SettingRowsModel(Host& host, Headings headings = Headings::sections);
    ~SettingRowsModel() override;

    void show(std::vector<SettingEntry> entries);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void toggle(int row, bool on);
    Q_INVOKABLE void choose(int row, int choice);
    /// Stores the newest value of a moving slider after a short delay.
    Q_INVOKABLE void slide(int row, double value);
    /// Stores a typed value or a chosen colour; an empty text restores the default.
    Q_INVOKABLE void write(int row, const QString& text);
    Q_INVOKABLE void restore(int row);
    /// The text of a number as the row shows it.
    Q_INVOKABLE QString numberText(int row, double value) const;

  private:
    struct Sliding {
        int row;
        std::string text;
    };

    const SettingEntry* at(int row) const;
    void set(int row, const std::string& text);
    void storeSliding();
    void announce(int row);
    void accept(int row);
    void forget();
    std::string sectionOf(const SettingEntry& entry) const;
    std::string problemOf(int row) const;
    int currentChoice(const SettingEntry& entry) const;

    Host& host_;
    const Headings headings_;
    std::vector<SettingEntry> entries_;
    std::vector<std::string> refused_; ///< by row: the typed text if it is invalid, else empty
    std::vector<std::function<void()>> endObservations_;
    std::optional<Sliding> sliding_;
    DelayedCall storing_;
};

} // namespace tessarune
