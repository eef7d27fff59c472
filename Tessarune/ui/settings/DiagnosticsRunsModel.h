#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunContents.h"
#include "Tessarune/ui/settings/SettingsWindowEnvironment.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace tessarune {

/// The diagnostics runs in the data folder and their contents. A run can be replayed, removed and
/// shown in the file manager.
///
/// Main thread; runs are read, replayed and removed on a queue of low priority. The environment
/// must outlive it.
class DiagnosticsRunsModel final : public QObject {
    Q_OBJECT
    /// The newest first: "title", "about", "holds", "canReplay", "canRemove".
    Q_PROPERTY(QVariantList runs READ runs NOTIFY listChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY listChanged)
    /// The captions of the replay that `message` reports; else empty.
    Q_PROPERTY(QString replay READ replay NOTIFY told)
    /// The result of the last action: after a replay, whether its captions equal those of the
    /// session.
    Q_PROPERTY(QString message READ message NOTIFY told)
    /// The row of the run that `message` is about; -1 if it is not in the list any more.
    Q_PROPERTY(int messageRow READ messageRow NOTIFY told)
    /// Whether `message` reports a success.
    Q_PROPERTY(bool isGood READ isGood NOTIFY told)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit DiagnosticsRunsModel(const SettingsWindowEnvironment& environment);
    ~DiagnosticsRunsModel() override;

    QVariantList runs() const;
    bool isEmpty() const { return isRead_ && runs_.empty(); }
    QString replay() const { return replay_; }
    QString message() const { return message_; }
    int messageRow() const;
    bool isGood() const { return isGood_; }
    QVariantMap texts() const;

    /// Reads the folder again.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void replayRun(int row);
    Q_INVOKABLE void openFolder(int row);
    Q_INVOKABLE void remove(int row);
    /// Clears the result of the last action, which the user has seen.
    Q_INVOKABLE void forget();

  Q_SIGNALS:
    void listChanged();
    void told();

  private:
    /// Work on the queue reports through this; `model` is null once the model has been destroyed.
    struct Link {
        DiagnosticsRunsModel* model;
    };
    using Apply = std::function<void(DiagnosticsRunsModel&)>;

    const DiagnosticsRunContents* at(int row) const;
    /// Runs `work` on the queue. `work` returns a function, which then runs on the main thread,
    /// unless this model has been destroyed.
    void inBackground(std::function<Apply()> work);
    void tell(const std::filesystem::path& run, const QString& message, bool isGood,
              const QString& replay = {});

    const SettingsWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<Link> link_;
    std::vector<DiagnosticsRunContents> runs_;
    bool isRead_ = false;
    std::filesystem::path messageRun_;
    QString replay_;
    QString message_;
    bool isGood_ = true;
    Observations observations_;
};

} // namespace tessarune
