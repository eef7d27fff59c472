#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The refinement of the chosen recording, and the first transcription of an imported one: the
/// models to choose from, the progress and the last failure. Main thread; environment and detail
/// must outlive it.
class HistoryRefinementModel final : public QObject {
    Q_OBJECT
    /// Whether the chosen recording can be refined now.
    Q_PROPERTY(bool canRefine READ canRefine NOTIFY changed)
    /// Whether its refinement is waiting or running.
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    /// 0 to 1; negative while the refinement waits, and if there is none.
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    /// Why the recording's last refinement failed; empty if it did not fail.
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    /// The models to choose from, as of the last `refresh`: first "automatic", then the installed
    /// models. Empty if none is installed.
    Q_PROPERTY(QStringList models READ models NOTIFY modelsChanged)

  public:
    /// `holdDataFolder` returns null if recordings cannot be changed now, and tells the user why.
    /// `onAlert` shows a message to the user: the result, or why nothing can be refined.
    HistoryRefinementModel(const HistoryWindowEnvironment& environment, HistoryDetailModel& detail,
                           std::function<DataFolderHold()> holdDataFolder,
                           std::function<void(const std::string&)> onAlert);

    bool canRefine() const;
    bool isBusy() const { return job().has_value(); }
    QString stateText() const;
    double progress() const;
    QString problem() const;
    QStringList models() const;

    /// Reads which models are installed.
    Q_INVOKABLE void refresh();
    /// `model` is an index into `models`.
    Q_INVOKABLE void refine(int model);
    /// Cancels the refinement. A text or translation that it has not replaced yet stays as it was.
    Q_INVOKABLE void cancel();

  Q_SIGNALS:
    void changed();
    void modelsChanged();

  private:
    std::optional<HistoryRefinementService::Progress> job() const;
    Task<void> run(HistoryRefinementRequest request, std::string model);

    const HistoryWindowEnvironment& environment_;
    HistoryDetailModel& detail_;
    const std::function<DataFolderHold()> holdDataFolder_;
    const std::function<void(const std::string&)> onAlert_;
    std::vector<std::string> models_;
    Observations observations_;
    const Lifeline<HistoryRefinementModel> lifeline_{*this};
};

} // namespace tessarune
