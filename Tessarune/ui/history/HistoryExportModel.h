#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>

namespace tessarune {

/// The panel that exports the chosen recording. While the sound of one recording is exported, every
/// recording can be exported in another format. Main thread; environment and detail must outlive
/// it.
class HistoryExportModel final : public QObject {
    Q_OBJECT
    /// "name" and "title" of each format.
    Q_PROPERTY(QVariantList formats READ formats CONSTANT)
    Q_PROPERTY(QString format READ format WRITE setFormat NOTIFY changed)
    /// 0: the source alone, 1: with the translation, 2: the translation alone.
    Q_PROPERTY(int content READ content WRITE setContent NOTIFY changed)
    Q_PROPERTY(bool isAudio READ isAudio NOTIFY changed)
    Q_PROPERTY(bool canBeBilingual READ canBeBilingual NOTIFY changed)
    /// Whether the format can contain the translation alone. Formats for reading always include the
    /// source.
    Q_PROPERTY(bool canBeTranslation READ canBeTranslation NOTIFY changed)
    /// A remark on the chosen format or on the saved translation.
    Q_PROPERTY(QString hint READ hint NOTIFY changed)
    /// Whether an export in the chosen format must wait until a running export has ended.
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY busyChanged)
    /// Whether an audio export runs. Other exports are too short to be cancelled.
    Q_PROPERTY(bool canCancel READ canCancel NOTIFY busyChanged)
    /// Names the recording whose audio export runs, as it may not be the shown one.
    Q_PROPERTY(QString audioText READ audioText NOTIFY busyChanged)
    /// 0 to 1; negative while it is unknown.
    Q_PROPERTY(double progress READ progress NOTIFY busyChanged)

  public:
    /// `onAlert` shows a message to the user: the result, or why there is nothing to export.
    HistoryExportModel(const HistoryWindowEnvironment& environment, HistoryDetailModel& detail,
                       std::function<void(const std::string&)> onAlert);
    ~HistoryExportModel() override { stop_.request_stop(); }

    QVariantList formats() const;
    QString format() const;
    void setFormat(const QString& format);
    int content() const;
    void setContent(int content);
    bool isAudio() const { return format_ == HistoryExportFormat::m4a; }
    bool canBeBilingual() const { return detail_.hasTranslation(); }
    bool canBeTranslation() const;
    QString hint() const;
    bool isBusy() const { return isAudio() ? writesAudio_ : writesText_; }
    bool canCancel() const { return writesAudio_; }
    QString audioText() const;
    double progress() const { return progress_; }

    /// Asks for a file name and writes the file.
    Q_INVOKABLE void run();
    Q_INVOKABLE void cancel();

  Q_SIGNALS:
    void changed();
    void busyChanged();
    /// `message` says where the file is, or why there is none.
    void ended(const QString& message);

  private:
    void write(HistoryExportRequest request, const std::filesystem::path& to);
    Task<void> writing(HistoryExportRequest request, std::filesystem::path to);
    void finish(HistoryExportFormat format, const std::string& message);
    bool& isWriting(HistoryExportFormat format);

    const HistoryWindowEnvironment& environment_;
    HistoryDetailModel& detail_;
    const std::function<void(const std::string&)> onAlert_;
    std::stop_source stop_;
    HistoryExportFormat format_ = HistoryExportFormat::pdf;
    int content_ = 1; ///< the user's choice, even if the recording or the format does not allow it
    bool writesText_ = false;
    bool writesAudio_ = false;
    std::string audioTitle_; ///< of the recording; valid while `writesAudio_`
    double progress_ = -1;   ///< of the audio export
    const Lifeline<HistoryExportModel> lifeline_{*this};
};

} // namespace tessarune
