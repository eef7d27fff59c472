#pragma once

#include "Tessarune/playback/TranscriptPlayback.h"
#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>
#include <string>

namespace tessarune {

/// The sound of the chosen recording, and the row of its transcript that is playing. Main thread;
/// environment and detail must outlive it.
class HistoryPlaybackModel final : public QObject {
    Q_OBJECT
    /// Whether the recording can be played.
    Q_PROPERTY(bool isAvailable READ isAvailable NOTIFY loadedChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY stateChanged)
    Q_PROPERTY(bool repeats READ repeats NOTIFY stateChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY stateChanged)
    /// In seconds, like `duration`.
    Q_PROPERTY(double position READ position NOTIFY positionChanged)
    Q_PROPERTY(QString positionText READ positionText NOTIFY positionTextChanged)
    Q_PROPERTY(double duration READ duration NOTIFY loadedChanged)
    Q_PROPERTY(QString durationText READ durationText NOTIFY loadedChanged)
    /// The speeds to choose from, and the index of the chosen one.
    Q_PROPERTY(QStringList rates READ rates CONSTANT)
    Q_PROPERTY(int rateIndex READ rateIndex WRITE setRateIndex NOTIFY rateChanged)
    /// The row that is playing, or that the user chose; -1: none.
    Q_PROPERTY(int activeRow READ activeRow NOTIFY activeRowChanged)

  public:
    HistoryPlaybackModel(const HistoryWindowEnvironment& environment, HistoryDetailModel& detail);

    bool isAvailable() const;
    bool isPlaying() const { return player() && *player()->isPlaying; }
    bool repeats() const { return player() && *player()->repeatsBoundedPlayback; }
    QString problem() const;
    double position() const;
    QString positionText() const;
    double duration() const;
    QString durationText() const;
    QStringList rates() const;
    int rateIndex() const;
    void setRateIndex(int index);
    int activeRow() const;

    Q_INVOKABLE void toggle();
    Q_INVOKABLE void pause();
    Q_INVOKABLE void seek(double seconds);
    Q_INVOKABLE void skip(double seconds) { seek(position() + seconds); }
    /// Plays only the sentences of this row.
    Q_INVOKABLE void playRow(int row);
    /// Plays from the word at this character of the row's text. If the row's text differs from the
    /// text of its first sentence, plays from the beginning of the row.
    Q_INVOKABLE void playWord(int row, int character);
    /// Marks a row and seeks to it without playing.
    Q_INVOKABLE void focusRow(int row);
    /// `direction` is 1 for the next sentence and -1 for the previous one.
    Q_INVOKABLE void stepSentence(int direction);
    Q_INVOKABLE void toggleRepeat();
    /// Selects the next faster speed with 1, the next slower one with -1.
    Q_INVOKABLE void stepRate(int direction) { setRateIndex(rateIndex() + direction); }

  Q_SIGNALS:
    void loadedChanged();
    void stateChanged();
    void positionChanged();
    void positionTextChanged();
    void rateChanged();
    void activeRowChanged();

  private:
    AudioPlayer* player() const { return environment_.player.get(); }
    void recordingChanged();
    void loadIfNeeded();
    void showRows();
    void moved();
    /// Announces the active row; `untimed` is the new `untimedRow_`.
    void markRow(std::optional<int> untimed);

    const HistoryWindowEnvironment& environment_;
    HistoryDetailModel& detail_;
    std::optional<TranscriptPlayback> transcript_;
    std::shared_ptr<void> watch_; ///< returned by the environment's `watchPlayback`
    std::optional<UUID> chosen_;  ///< the chosen recording
    bool isLoaded_ = false;       ///< whether the player has opened the chosen recording
    std::string loadedPath_;
    /// The row that the user chose, if the row has no time; reset when a sentence becomes active or
    /// the transcript changes.
    std::optional<int> untimedRow_;
    QString shownPosition_;
    Observations observations_;
};

} // namespace tessarune
