#include "Tessarune/ui/history/HistoryExportModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/text/Localization.h"

#include <QVariantMap>
#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

using Format = HistoryExportFormat;

const std::pair<Format, const char*> formatTitles[] = {
    {Format::html, "HTML"}, {Format::pdf, "PDF"},    {Format::m4a, "M4A"},
    {Format::srt, "SRT"},   {Format::vtt, "WebVTT"}, {Format::txt, "TXT"}};

QString nameOf(Format format) {
    const auto name = HistoryExport::fileExtension(format);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace

HistoryExportModel::HistoryExportModel(const HistoryWindowEnvironment& environment,
                                       HistoryDetailModel& detail,
                                       std::function<void(const std::string&)> onAlert)
    : environment_(environment), detail_(detail), onAlert_(std::move(onAlert)) {
    connect(&detail_, &HistoryDetailModel::transcriptChanged, this, &HistoryExportModel::changed);
}

QVariantList HistoryExportModel::formats() const {
    QVariantList all;
    for (const auto& [format, title] : formatTitles)
        all << QVariantMap{{"name", nameOf(format)}, {"title", QString::fromUtf8(title)}};
    return all;
}

QString HistoryExportModel::format() const {
    return nameOf(format_);
}

void HistoryExportModel::setFormat(const QString& format) {
    const auto known = HistoryExport::formatOf(format.toStdString());
    if (!known || std::exchange(format_, *known) == *known)
        return;
    Q_EMIT changed();
    Q_EMIT busyChanged();
}

void HistoryExportModel::setContent(int content) {
    if (std::exchange(content_, content) != content)
        Q_EMIT changed();
}

int HistoryExportModel::content() const {
    if (!canBeBilingual())
        return 0;
    return canBeTranslation() ? content_ : std::min(content_, 1);
}

bool HistoryExportModel::canBeTranslation() const {
    return format_ == Format::srt || format_ == Format::vtt || format_ == Format::txt;
}

QString HistoryExportModel::hint() const {
    if (isAudio())
        return historyText("M4A 仅导出音频，不含文字");
    return canBeBilingual() ? historyText("导出会话中已保存的译文")
                            : historyText("这条录音没有已保存译文");
}

void HistoryExportModel::run() {
    if (!detail_.recording() || isBusy())
        return;
    using Content = HistoryTranscriptExportContent;
    constexpr Content contents[] = {Content::source, Content::bilingual, Content::translation};
    const HistoryExportRequest request{*detail_.recording(), format_,
                                       contents[std::clamp(content(), 0, 2)]};
    if (!isAudio() && !detail_.hasText()) {
        onAlert_(localized("这条录音没有识别文本。"));
        return;
    }
    environment_.chooseFile(
        HistoryExport::suggestedFilename(request),
        lifeline_.calling([request](HistoryExportModel& model, const std::filesystem::path& to) {
            model.write(request, to);
        }));
}

QString HistoryExportModel::audioText() const {
    return QString::fromStdString(localized("Exporting the sound of “%@”…", {audioTitle_}));
}

bool& HistoryExportModel::isWriting(Format format) {
    return format == Format::m4a ? writesAudio_ : writesText_;
}

void HistoryExportModel::cancel() {
    stop_.request_stop();
}

void HistoryExportModel::write(HistoryExportRequest request, const std::filesystem::path& to) {
    if (std::exchange(isWriting(request.format), true))
        return;
    if (request.format == Format::m4a) {
        audioTitle_ = titleOf(request.recording);
        progress_ = -1;
        stop_ = std::stop_source();
    }
    Q_EMIT busyChanged();
    spawn(Executor::main(environment_.host), writing(std::move(request), to));
}

Task<void> HistoryExportModel::writing(HistoryExportRequest request, std::filesystem::path to) {
    const auto held = lifeline_.held();
    const Format format = request.format;
    MediaProgress progress =
        lifeline_.posting(environment_.host, [](HistoryExportModel& model, double fraction) {
            model.progress_ = fraction;
            Q_EMIT model.busyChanged();
        });
    std::string message = localized("已保存到：%@", {to.string()});
    try {
        Task<void> exporting =
            environment_.exporter.write(std::move(request), to, progress, stop_.get_token());
        co_await exporting;
    } catch (const CancellationError&) {
        message.clear();
    } catch (const std::exception& error) {
        message = error.what();
    }
    if (*held)
        finish(format, message);
}

void HistoryExportModel::finish(Format format, const std::string& message) {
    isWriting(format) = false;
    Q_EMIT busyChanged();
    if (message.empty()) // cancelled
        return;
    onAlert_(message);
    Q_EMIT ended(QString::fromStdString(message));
}

} // namespace tessarune
