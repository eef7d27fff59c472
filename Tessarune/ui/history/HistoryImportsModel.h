#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/controls/ListedRows.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QHash>
#include <QList>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// A file that waits for its import, is being imported or could not be imported.
struct ImportedFile {
    enum class State { waiting, copying, failed };

    int number = 0; ///< tells files with the same path apart
    std::filesystem::path path;
    State state = State::waiting;
    std::string problem; ///< why the import failed

    bool operator==(const ImportedFile&) const = default;
};

/// The files to import, one after the other. A file that has been imported leaves the list; one
/// that failed stays, with the reason, until the user removes it. Main thread; the
/// environment must outlive it. Destroying the model cancels the running import.
class HistoryImportsModel final : public ListedRows<ImportedFile> {
    Q_OBJECT

  public:
    enum Role {
        NameRole = Qt::UserRole,
        StateTextRole, ///< for a failed file: the reason
        FailedRole,
        ProgressRole ///< 0 to 1; negative: the file waits or has failed
    };

    /// `holdDataFolder` returns null if recordings cannot be changed now, and tells the user why.
    HistoryImportsModel(const HistoryWindowEnvironment& environment,
                        std::function<DataFolderHold()> holdDataFolder);
    ~HistoryImportsModel() override { stop_.request_stop(); }

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Asks the user for files and imports them.
    Q_INVOKABLE void choose();
    Q_INVOKABLE void add(const QList<QUrl>& files);
    /// Cancels a file that waits or is being copied; removes a failed one from the list.
    Q_INVOKABLE void remove(int row);

  Q_SIGNALS:
    /// The row is new, its import begins, or it has failed: it should be visible.
    void attentionWanted(int row);

  private:
    void add(const std::vector<ImportedFile>& files);
    Task<void> importAll(DataFolderHold hold);
    void ended(int number, const std::string& problem);
    void set(std::vector<ImportedFile> files);
    int rowIn(ImportedFile::State state) const;

    const HistoryWindowEnvironment& environment_;
    const std::function<DataFolderHold()> holdDataFolder_;
    std::stop_source stop_; ///< of the file that is being copied
    int lastNumber_ = 0;
    bool isImporting_ = false;
    Observations observations_;
    const Lifeline<HistoryImportsModel> lifeline_{*this};
};

} // namespace tessarune
