#include "Tessarune/ui/desktop/DesktopHistory.h"

#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/playback/PlaybackTelemetry.h"
#include "TessaruneCore/text/Localization.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QStandardPaths>
#include <string>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

/// Makes this program the one that may change recordings, if it is not so already.
std::string problemOfChange(Application& application) {
    try {
        const auto holder = application.recording.takeDataFolder();
        return holder ? localized("%@（进程 %lld）正在使用这些录音，请在那里修改。",
                                  {holder->program, std::to_string(holder->processID)})
                      : std::string();
    } catch (const std::system_error& error) {
        return error.what();
    }
}

/// Where the user exported to last, at first the documents.
QString& exportFolder() {
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return folder;
}

void chooseExportFile(const std::string& suggestedName,
                      std::function<void(std::filesystem::path)> chosen) {
    auto* const dialog = new QFileDialog(nullptr, QString::fromStdString(localized("导出")));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave); // and asks before it replaces a file
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDirectory(exportFolder());
    dialog->selectFile(QString::fromStdString(suggestedName));
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                     [chosen = std::move(chosen)](const QString& file) {
                         exportFolder() = QFileInfo(file).absolutePath();
                         chosen(std::filesystem::path(file.toStdString()));
                     });
    dialog->open();
}

std::shared_ptr<AudioPlayer> makePlayer(Host& host, SoundServer& sound) {
    return std::make_shared<AudioPlayer>(
        host, PlaybackParts{sound, openFFmpegMediaFile, makeAtempoConverter});
}

} // namespace

std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound) {
    return std::make_unique<HistoryWindow>(HistoryWindowEnvironment{
        .host = application.host,
        .catalog = application.catalog,
        .files = application.files,
        .notifications = application.notifications,
        .exporter = application.historyExport,
        .search = application.search,
        .changeProblem = [&application] { return problemOfChange(application); },
        .chooseFile = chooseExportFile,
        .copy =
            [](const std::string& text) {
                QGuiApplication::clipboard()->setText(QString::fromStdString(text));
            },
        .player = makePlayer(application.host, sound.computer()),
        .refinements = &application.refinement.jobs(),
        .watchPlayback = [&application](TranscriptPlayback& playback) -> std::shared_ptr<void> {
            return std::make_shared<PlaybackTelemetry>(
                application.host, application.logger,
                application.settings.historyPlaybackDiagnosticsEnabled, playback);
        }});
}

} // namespace tessarune
