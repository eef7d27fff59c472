#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryTranscriptModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The recording chosen in the list: its note, and its transcript in one or two languages. Main
/// thread; the environment must outlive it.
class HistoryDetailModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown NOTIFY recordingChanged)
    Q_PROPERTY(QString title READ title NOTIFY recordingChanged)
    Q_PROPERTY(QString duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY recordingChanged)
    Q_PROPERTY(QString note READ note NOTIFY noteChanged)
    /// 0: the source alone, 1: with the translation.
    Q_PROPERTY(int mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(tessarune::HistoryTranscriptModel* rows READ rows CONSTANT)
    Q_PROPERTY(bool isTimed READ isTimed NOTIFY transcriptChanged)
    Q_PROPERTY(bool hasText READ hasText NOTIFY transcriptChanged)
    Q_PROPERTY(bool hasTranslation READ hasTranslation NOTIFY transcriptChanged)
    /// Why there is no text, why a file cannot be read, or that a finished session lacks the
    /// requested translation; empty if none of these applies, and while the files are being read.
    Q_PROPERTY(QString hint READ hint NOTIFY transcriptChanged)

  public:
    explicit HistoryDetailModel(const HistoryWindowEnvironment& environment);
    ~HistoryDetailModel() override;

    /// Shows the chosen recording as the catalog has it now; `nullopt` if none is chosen.
    void show(const std::optional<HistoryItem>& recording);
    const std::optional<HistoryItem>& recording() const { return recording_; }
    /// Reads the recording's files again. While its session runs, shows the text recognised so far
    /// instead.
    void readTranscript();

    bool isShown() const { return recording_.has_value(); }
    QString title() const;
    QString duration() const;
    bool isRunning() const { return recording_ && recording_->live; }
    QString note() const;
    int mode() const { return mode_; }
    void setMode(int mode);
    HistoryTranscriptModel* rows() { return &rows_; }
    bool isTimed() const { return rows_.isTimed(); }
    bool hasText() const { return !payload_.sourceText.empty(); }
    bool hasTranslation() const { return !payload_.bilingualText.empty(); }
    QString hint() const;
    const HistoryTranscriptPayload& payload() const { return payload_; }
    const HistoryWordTimeline& timeline() const { return timeline_; }

  Q_SIGNALS:
    void recordingChanged();
    void durationChanged();
    void noteChanged();
    void modeChanged();
    /// The texts, or the choice of the texts to show, may have changed.
    void transcriptChanged();
    /// The source text has changed; not emitted for new words of a running session.
    void sourceChanged();

  private:
    Task<void> load(HistoryItem recording);
    void showLiveText();
    void showRows(bool isSameRecording = true);

    const HistoryWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::uint64_t readings_ = 0; ///< readings so far; only the result of the last is used
    std::optional<HistoryItem> recording_;
    HistoryTranscriptPayload payload_;
    HistoryWordTimeline timeline_;
    std::string problem_; ///< why one of the recording's files cannot be read
    bool isLoading_ = false;
    int mode_ = HistoryTranscriptPayload::bilingualMode;
    HistoryTranscriptModel rows_;
    NotificationCenter::Observation observation_;
    Observations observations_;
    const Lifeline<HistoryDetailModel> lifeline_{*this};
};

} // namespace tessarune
