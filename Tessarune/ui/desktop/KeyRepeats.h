#pragma once

#include <QObject>
#include <QtGlobal>

namespace tessarune {

/// Marks every key press by which an X server repeats a held key as a repetition, so that a held
/// key acts once. A server repeats a key by a release and a press of the same time. Qt recognises
/// them only if the press is already in its queue when it handles the release; on a busy computer
/// it often is not. Event filters that were installed later see the unmarked press. Main thread.
class KeyRepeats : public QObject {
  public:
    KeyRepeats();

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    quint64 releaseTime_ = 0;
    quint32 releasedScanCode_ = 0;
};

} // namespace tessarune
