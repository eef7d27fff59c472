#pragma once

#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QTimer>

namespace tessarune {

/// Shows the reader the sound level and why no new words are shown: it is quiet, the captions are
/// behind, they have stopped, or the user cleared them and nothing was said since. Main thread; the
/// environment must outlive it.
class CaptionHearingModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isListening READ isListening NOTIFY levelChanged)
    Q_PROPERTY(double level READ level NOTIFY levelChanged) ///< 0 to 1
    /// Why no new words are shown; empty if there is no reason, or if the status explains it.
    Q_PROPERTY(QString text READ text NOTIFY textChanged)

  public:
    explicit CaptionHearingModel(const CaptionWindowEnvironment& environment);

    bool isListening() const;
    double level() const { return level_; }
    QString text() const { return text_; }

  Q_SIGNALS:
    void levelChanged();
    void textChanged();

  private:
    const SessionView& session() const { return environment_.session; }
    void follow();
    void poll();
    void updateText();
    std::string reason() const;

    const CaptionWindowEnvironment& environment_;
    QTimer timer_; // runs while the session listens
    double level_ = 0;
    double loudAt_ = 0;   // host time of the last sound
    double lookedAt_ = 0; // host time at which `secondsBehind_` was read
    double secondsBehind_ = 0;
    QString text_;
    Observations observations_;
};

} // namespace tessarune
