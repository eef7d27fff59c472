#include "Tessarune/ui/desktop/DesktopHistory.h"

#include "Tessarune/app/PronunciationSound.h"
#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/web/HTTPSFetch.h"
#include "Tessarune/playback/PlaybackTelemetry.h"
#include "TessaruneCore/text/Localization.h"

#include <QClipboard>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

/// The folder of the last chosen file; initially the user's documents folder.
QString& lastFolder() {
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return folder;
}

/// Chooses icons without reading the files, which would block the windows on a slow disk.
class PlainFileIcons final : public QFileIconProvider {
  public:
    QIcon icon(const QFileInfo& file) const override {
        return QFileIconProvider::icon(file.isDir() ? Folder : File);
    }
    QString type(const QFileInfo&) const override { return {}; }
};

/// A dialog that deletes itself when it is closed.
QFileDialog* fileDialog(const std::string& title) {
    auto* const dialog = new QFileDialog(nullptr, QString::fromStdString(title));
    static PlainFileIcons icons;
    dialog->setIconProvider(&icons);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setDirectory(lastFolder());
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                     [](const QString& file) { lastFolder() = QFileInfo(file).absolutePath(); });
    return dialog;
}

void chooseExportFile(const std::string& suggestedName,
                      std::function<void(std::filesystem::path)> chosen) {
    auto* const dialog = fileDialog(localized("导出"));
    dialog->setAcceptMode(QFileDialog::AcceptSave); // the dialog asks before a file is replaced
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(QString::fromStdString(suggestedName));
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                     [chosen = std::move(chosen)](const QString& file) {
                         chosen(std::filesystem::path(file.toStdString()));
                     });
    dialog->open();
}

void chooseFilesToImport(std::function<void(std::vector<std::filesystem::path>)> chosen) {
    auto* const dialog = fileDialog(localized("导入声音或视频文件"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters(
        {QString::fromStdString(localized("声音和视频")) +
             QStringLiteral(" (*.wav *.mp3 *.m4a *.aac *.flac *.ogg *.oga *.opus *.wma *.aiff "
                            "*.aif *.amr *.ac3 *.mp4 *.m4v *.mov *.mkv *.webm *.avi *.mpg *.mpeg "
                            "*.ts *.flv *.wmv *.3gp)"),
         QString::fromStdString(localized("所有文件")) + QStringLiteral(" (*)")});
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog,
                     [chosen = std::move(chosen)](const QStringList& files) {
                         std::vector<std::filesystem::path> paths;
                         for (const QString& file : files) {
                             lastFolder() = QFileInfo(file).absolutePath();
                             paths.emplace_back(file.toStdString());
                         }
                         chosen(std::move(paths));
                     });
    dialog->open();
}

std::vector<std::string> installedModels(const SpeechModelManager& models) {
    std::vector<std::string> names;
    for (const SpeechModelState& model : models.list()) {
        if (model.isInstalled && model.damage.empty())
            names.push_back(model.name);
    }
    return names;
}

} // namespace

std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound,
                                                 const LiveTranscriptStore& session,
                                                 Desktop& desktop) {
    Host& host = application.host;
    const PlaybackParts parts{sound.computer(), openFFmpegMediaFile, makeAtempoConverter};
    return std::make_unique<HistoryWindow>(HistoryWindowEnvironment{
        .host = host,
        .settings = application.settings,
        .catalog = application.catalog,
        .files = application.files,
        .notifications = application.notifications,
        .logger = application.logger,
        .exporter = application.historyExport,
        .search = application.search,
        .refinement = application.refinement,
        .imports = application.imports,
        .wordStatistics = application.wordStats,
        .vocabulary = std::make_shared<VocabularyStore>(application.files, application.paths),
        .vocabularyPreferences = std::make_shared<VocabularyPreferences>(application.defaults),
        .leaseDataFolder = [&application] { return application.leaseDataFolder(); },
        .speechModels = [&application] { return installedModels(application.speechModels); },
        .chooseFile = chooseExportFile,
        .chooseFiles = chooseFilesToImport,
        .copy =
            [](const std::string& text) {
                QGuiApplication::clipboard()->setText(QString::fromStdString(text));
            },
        .openURL = [&desktop](const std::string& url) { desktop.openURL(url); },
        .notify = [&desktop](const std::string& text) { desktop.notify("Tessarune", text); },
        .player = std::make_shared<AudioPlayer>(host, parts),
        .pronunciation = std::make_shared<HistoryPronunciationAudioPlayer>(
            host, fetchOverHTTPS, PronunciationSound::make(host, parts)),
        .liveText = &session.view().liveHistoryText,
        .liveDuration = &session.view().sessionDuration,
        .liveRecording = [&session] { return session.recordingTracker().currentID(); },
        .watchPlayback = [&application](TranscriptPlayback& playback) -> std::shared_ptr<void> {
            return std::make_shared<PlaybackTelemetry>(
                application.host, application.logger,
                application.settings.historyPlaybackDiagnosticsEnabled, playback);
        }});
}

} // namespace tessarune
