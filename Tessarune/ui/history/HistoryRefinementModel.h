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

/// The chosen recording transcribed again: with which model, how far it is, why it came to nothing.
/// Main thread; environment and detail outlive it.
class HistoryRefinementModel final : public QObject {
    Q_OBJECT
    /// The chosen recording can be refined now.
    Q_PROPERTY(bool canRefine READ canRefine NOTIFY changed)
    /// It waits for it, or it is being done.
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    /// 0 to 1; below 0 while it waits.
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    /// Why it came to nothing last; empty: it did not.
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    /// What can do it: first whichever is best, then the models of this computer.
    Q_PROPERTY(QStringList models READ models NOTIFY modelsChanged)

  public:
    /// `mayChange` tells the user why recordings cannot be changed now, if so; `onAlert` how it
    /// went.
    HistoryRefinementModel(const HistoryWindowEnvironment& environment, HistoryDetailModel& detail,
                           std::function<bool()> mayChange,
                           std::function<void(const std::string&)> onAlert);

    bool canRefine() const;
    bool isBusy() const { return job().has_value(); }
    QString stateText() const;
    double progress() const;
    QString problem() const;
    QStringList models() const;

    /// Looks which models are here now.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void refine(int model);
    /// The transcript stays as it was.
    Q_INVOKABLE void cancel();

  Q_SIGNALS:
    void changed();
    void modelsChanged();

  private:
    std::optional<HistoryRefinementService::Progress> job() const;
    Task<void> run(HistoryRefinementRequest request, std::string model);

    const HistoryWindowEnvironment& environment_;
    HistoryDetailModel& detail_;
    const std::function<bool()> mayChange_;
    const std::function<void(const std::string&)> onAlert_;
    std::vector<std::string> models_;
    Observations observations_;
    const Lifeline<HistoryRefinementModel> lifeline_{*this};
};

} // namespace tessarune
