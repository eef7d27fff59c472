#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAbstractListModel>
#include <QString>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// Something that can be chosen, downloaded and removed: a speech model or a language.
struct Resource {
    enum class State { builtIn, installed, available, unavailable, damaged };

    std::string id; ///< what the setting stores
    std::string title;
    std::string flag;
    std::uint64_t bytes = 0; ///< 0: unknown, or nothing to download
    State state = State::available;
    bool isRemovable = false;
    std::string note; ///< the speed of a model, the damage, or other information; may be empty
};

/// Resources as rows, each with its state: chosen, downloading, damaged. Main thread; host and
/// setting must outlive it. The destructor asks running downloads to stop.
class ResourcesModel final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

    /// A problem to show: the rows could not be read, the setting is unreadable, or it names none
    /// of these resources. Empty if there is none.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)

  public:
    enum Role {
        TitleRole = Qt::UserRole,
        FlagRole,
        DetailRole, ///< state and size, or the progress of a download
        NoteRole,
        ProblemRole,
        ChosenRole,
        CanChooseRole,
        CanDownloadRole,
        CanRemoveRole,
        LoadingRole,
        ProgressRole, ///< 0 to 1; negative: unknown
    };

    /// The source of the resources. On failure, its functions throw with a text for the user.
    struct Source {
        using Progress = std::function<void(std::uint64_t received, std::uint64_t expected)>;

        std::function<std::vector<Resource>()> list;
        std::function<Task<void>(std::string id, Progress progress, std::stop_token stop)> download;
        std::function<void(const std::string& id)> remove;
        /// Whether a resource that is not installed can be chosen.
        bool choosesMissing = false;
    };

    ResourcesModel(Host& host, Setting<std::string>& chosen, Source source);
    ~ResourcesModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    QVariantMap texts() const;
    QString problem() const;

    /// Reads the disk again.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void download(int row);
    Q_INVOKABLE void stop(int row);
    Q_INVOKABLE void remove(int row);

    /// Shows on each running download why it makes no progress. Progress removes the text.
    void tellTrouble(const std::string& text);

  Q_SIGNALS:
    void problemChanged();

  private:
    struct Download {
        std::stop_source stop;
        std::uint64_t received = 0;
        std::uint64_t expected = 0;
        std::string trouble;
    };
    struct Row {
        Resource resource;
        std::shared_ptr<Download> download; ///< null: no download in progress
        std::string problem;                ///< of the last operation that failed
    };
    /// A download reports through its link; `model` is null once this object has been destroyed.
    struct Link {
        ResourcesModel* model;
    };

    static Task<void> run(std::shared_ptr<Link> link, Task<void> downloading, std::string id,
                          std::stop_token stop);
    void received(const std::string& id, std::uint64_t received, std::uint64_t expected);
    void ended(const std::string& id, const std::string& problem);
    Row* find(const std::string& id);
    const Row* at(int row) const;
    void announce(const Row& row);
    bool canChoose(const Row& row) const;
    QString detailOf(const Row& row) const;

    Host& host_;
    Setting<std::string>& chosen_;
    const Source source_;
    std::vector<Row> rows_;
    std::string listProblem_; ///< why the last reading failed; empty: it did not
    std::shared_ptr<Link> link_;
    Observations observations_;
};

} // namespace tessarune
