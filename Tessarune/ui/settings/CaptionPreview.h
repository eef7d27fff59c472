#pragma once

#include "Tessarune/session/SessionView.h"
#include "Tessarune/ui/captions/CaptionStageModel.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "Tessarune/ui/captions/CaptionWindowModel.h"
#include "Tessarune/ui/settings/SettingsWindowEnvironment.h"

#include <QObject>
#include <QTimer>
#include <string>

namespace tessarune {

/// Shows sample captions with the current settings, on a stage like that of the caption window. New
/// words appear only while `running` is true. Main thread; the environment must outlive it.
class CaptionPreview final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tessarune::CaptionStageModel* stage READ stage CONSTANT)
    /// Supplies the background.
    Q_PROPERTY(tessarune::CaptionWindowModel* window READ window CONSTANT)
    Q_PROPERTY(bool running READ isRunning WRITE setRunning NOTIFY runningChanged)

  public:
    explicit CaptionPreview(const SettingsWindowEnvironment& environment);

    CaptionStageModel* stage() { return &stage_; }
    CaptionWindowModel* window() { return &window_; }
    bool isRunning() const { return wordTimer_.isActive(); }
    void setRunning(bool running);

  Q_SIGNALS:
    void runningChanged();

  private:
    void sayNextWord();
    void settle();

    LiveCaptionDisplayStore display_{[] { return 0.0; }};
    SessionTranslation noTranslation_;
    CaptionCore core_;
    SessionView session_;
    Published<std::string> noFile_;
    Published<CaptionNotice> noNotice_;
    const CaptionWindowEnvironment environment_;
    CaptionStageModel stage_;
    CaptionWindowModel window_;
    LiveCaptionDisplayFrame frame_ = LiveCaptionDisplayFrame::empty();
    QTimer wordTimer_;
    std::size_t sentence_ = 0; ///< the index of the spoken sentence
    std::size_t spoken_ = 0;   ///< the number of its words so far
};

} // namespace tessarune
