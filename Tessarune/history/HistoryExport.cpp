#include "Tessarune/history/HistoryExport.h"

#include "Tessarune/history/HistorySubtitles.h"
#include "Tessarune/shell/ChosenFile.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

using Format = HistoryExportFormat;
using Content = HistoryTranscriptExportContent;
using ErrorKind = HistoryExportError::Kind;

constexpr std::array<std::pair<Format, std::string_view>, 6> extensions{{{Format::html, "html"},
                                                                         {Format::pdf, "pdf"},
                                                                         {Format::m4a, "m4a"},
                                                                         {Format::srt, "srt"},
                                                                         {Format::vtt, "vtt"},
                                                                         {Format::txt, "txt"}}};

std::string formatName(Format format) {
    switch (format) {
    case Format::html:
        return "HTML";
    case Format::pdf:
        return "PDF";
    case Format::m4a:
        return "M4A";
    case Format::srt:
        return "SRT";
    case Format::vtt:
        return "WebVTT";
    case Format::txt:
        return "TXT";
    }
    return {};
}

std::string failureText(Format format, const std::string& reason) {
    switch (format) {
    case Format::html:
        return localized("HTML 导出失败：%@", {reason});
    case Format::pdf:
        return localized("PDF 导出失败：%@", {reason});
    default:
        return localized("导出失败：%@", {reason});
    }
}

std::string missingTranslationText(Format format) {
    switch (format) {
    case Format::html:
        return localized("这条录音没有已保存译文，无法导出双语 HTML。");
    case Format::pdf:
        return localized("这条录音没有已保存译文，无法导出双语 PDF。");
    default:
        return localized("这条录音没有已保存译文，无法导出 %@。", {formatName(format)});
    }
}

bool isSubtitle(Format format) {
    return format == Format::srt || format == Format::vtt;
}

/// The name reduced to "-", "_", and the letters and digits of any script.
std::string stemOf(std::string_view name) {
    std::string stem;
    for (const char32_t point : Text::codePoints(AudioExporter::withinFileName(name))) {
        const bool stays = Text::isAlphanumeric(point) || point == U'_';
        if (stays)
            Text::append(stem, point);
        else if (!stem.empty() && stem.back() != '-')
            stem += '-';
    }
    while (stem.ends_with('-'))
        stem.pop_back();
    return stem;
}

/// Counts as one unfinished file for as long as it exists.
class CountedFile {
  public:
    explicit CountedFile(Published<int>& count) : count_(count) { count_ = *count_ + 1; }
    ~CountedFile() { count_ = *count_ - 1; }
    CountedFile(const CountedFile&) = delete;

  private:
    Published<int>& count_;
};

std::string fileStem(const HistoryItem& recording) {
    const std::string stem = stemOf(Text::trimmed(recording.note));
    return stem.empty() ? stemOf(recording.date + "-" + recording.time) : stem;
}

} // namespace

HistoryExport::HistoryExport(Host& host, RecordingCatalog& catalog, FileSystem& files,
                             AudioExporter& audio, WriteTranscriptPDF pdf)
    : host_(host),
      catalog_(catalog),
      files_(files),
      audio_(audio),
      pdf_(std::move(pdf)),
      queue_(host.serialQueue("Tessarune.history.export", QueuePriority::standard)) {}

Task<void> HistoryExport::write(HistoryExportRequest request, std::filesystem::path to,
                                MediaProgress progress, std::stop_token stop) {
    const CountedFile counted(unfinishedFiles_);
    to = ChosenFile::followingLink(to);
    if (ChosenFile::isBelow(catalog_.paths().appSupportBase(), to))
        throw HistoryExportError(ErrorKind::failed, ChosenFile::isOwnProblem(to));
    if (request.format != Format::m4a) {
        Task<void> writing = writeDocument(std::move(request), to);
        co_await writing;
        co_return;
    }
    std::stop_source either;
    using Callback = std::stop_callback<std::function<void()>>;
    const Callback byCaller(stop, [&either] { either.request_stop(); });
    const Callback byEnd(ending_.get_token(), [&either] { either.request_stop(); });
    try {
        Task<void> writing =
            writeAudio(std::move(request), to, std::move(progress), either.get_token());
        co_await writing;
    } catch (const CancellationError&) {
        if (stop.stop_requested())
            throw;
        throw HistoryExportError(ErrorKind::failed,
                                 localized("Tessarune was closed before the export was complete."));
    }
}

Task<void> HistoryExport::end() {
    constexpr double longestSeconds = 2;
    constexpr double lookSeconds = 0.02;
    ending_.request_stop();
    for (double waited = 0; *unfinishedFiles_ > 0 && waited < longestSeconds; waited += lookSeconds)
        co_await sleep(Executor::main(host_), lookSeconds);
}

Task<void> HistoryExport::writeDocument(HistoryExportRequest request, std::filesystem::path to) {
    Task<std::string> making = document(request);
    const std::string bytes = co_await making;
    co_await runOn(Executor::queue(host_, queue_), [&] {
        try {
            files_.writeAtomically(to, bytes);
        } catch (const std::exception& error) {
            throw HistoryExportError(ErrorKind::failed, failureText(request.format, error.what()));
        }
    });
}

Task<void> HistoryExport::writeAudio(HistoryExportRequest request, std::filesystem::path to,
                                     MediaProgress progress, std::stop_token stop) {
    const Executor worker = Executor::queue(host_, queue_);
    // The file has an unused name until it is complete, so that no file in the user's folder is
    // damaged.
    const bool mayReplace = files_.exists(to); // the caller has asked
    std::filesystem::path unfinished = to;
    unfinished += ".new-" + UUID::random().text().substr(0, 8);
    std::filesystem::path from(request.recording.filePath.value_or(""));
    bool isCopied = false;
    co_await runOn(worker, [&] {
        // The recording may have been compressed since the user chose it.
        const auto recording = catalog_.recording(request.recording.id);
        if (recording)
            from = recording->filePath;
        if (recording && isOurM4A(*recording))
            runAudioStep(unfinished, to, [&] {
                // A file whose size differs from the size in its entry may be damaged. It is not
                // copied but transcoded, because the decoder detects damage.
                isCopied = files_.size(from) == static_cast<std::uint64_t>(recording->byteCount);
                if (isCopied)
                    copyAudio(from, unfinished, progress, stop);
            });
    });
    try {
        if (!isCopied) {
            Task<void> transcoding =
                audio_.transcodeToM4A(from, unfinished, std::move(progress), std::move(stop));
            co_await transcoding;
        }
    } catch (const AudioExporter::ExportError& error) {
        throw HistoryExportError(ErrorKind::failed, naming(to, unfinished, error.what()));
    }
    co_await runOn(worker, [&] {
        runAudioStep(unfinished, to, [&] {
            if (!mayReplace && files_.exists(to))
                throw std::runtime_error(localized("a file of this name was created meanwhile"));
            files_.rename(unfinished, to);
        });
    });
}

Task<std::string> HistoryExport::document(HistoryExportRequest request) {
    const Executor worker = Executor::queue(host_, queue_);
    std::string bytes;
    co_await runOn(worker, [&] {
        try {
            bytes = documentBytes(request);
        } catch (const HistoryExportError&) {
            throw;
        } catch (const std::exception& error) {
            throw HistoryExportError(ErrorKind::failed, failureText(request.format, error.what()));
        }
    });
    co_return bytes;
}

std::string HistoryExport::documentBytes(const HistoryExportRequest& request) {
    const HistoryWordTimeline times = timeline(request.recording);
    const auto document = exportDocument(request, times);
    if (isSubtitle(request.format) && document.sentenceTimings.empty())
        throw HistoryExportError(ErrorKind::noTimes,
                                 localized("这条录音没有时间信息，无法导出字幕。"));
    const auto cues = [&] {
        return HistorySubtitles::cues(document, times.words, request.recording.durationSeconds);
    };
    switch (request.format) {
    case Format::html:
        return document.html();
    case Format::pdf:
        return pdf_(document.pdfDocument());
    case Format::srt:
        return HistorySubtitles::srt(cues());
    case Format::vtt:
        return HistorySubtitles::webVTT(cues());
    case Format::txt:
        return document.plainText();
    case Format::m4a:
        break;
    }
    throw std::logic_error("audio is not a document");
}

HistoryTranscriptExportDocument HistoryExport::exportDocument(const HistoryExportRequest& request,
                                                              const HistoryWordTimeline& times) {
    const HistoryItem& recording = request.recording;
    HistoryTranscriptExportDocument document;
    document.title = recording.date + " " + recording.time;
    document.note = std::string(Text::trimmed(recording.note));
    document.content = request.content;
    document.text = exportText(request);
    document.sentenceTimings =
        times.sentences.empty() ? times.derivedSentencesFromWords() : times.sentences;
    return document;
}

std::string HistoryExport::exportText(const HistoryExportRequest& request) {
    const auto read = [&](const std::filesystem::path& path) {
        return files_.exists(path) ? files_.read(path) : std::string();
    };
    const UUID& id = request.recording.id;
    const bool isSource = request.content == Content::source;
    std::string text =
        read(isSource ? catalog_.transcriptURL(id) : catalog_.bilingualTranscriptURL(id));
    if (!Text::trimmed(text).empty())
        return text;
    if (isSource || Text::trimmed(read(catalog_.transcriptURL(id))).empty())
        throw HistoryExportError(ErrorKind::noTranscript, localized("这条录音没有识别文本。"));
    throw HistoryExportError(ErrorKind::noTranslation, missingTranslationText(request.format));
}

/// Empty if the timeline is unreadable: the export then has the text without the times.
HistoryWordTimeline HistoryExport::timeline(const HistoryItem& recording) {
    const auto path = catalog_.wordTimelineURL(recording.id);
    try {
        if (files_.exists(path))
            return HistoryWordTimeline::decoded(files_.read(path)).value_or(HistoryWordTimeline());
    } catch (const std::system_error&) { // the document then has no times
    }
    return {};
}

/// Whether this program encoded the file; the export is then a copy of it. The file's name alone
/// does not tell, because an import may be an M4A as well.
bool HistoryExport::isOurM4A(const RecordingMetadata& recording) {
    return recording.audioFormat == M4A::audioFormat && recording.filePath.ends_with(".m4a");
}

void HistoryExport::copyAudio(const std::filesystem::path& from, const std::filesystem::path& to,
                              const MediaProgress& progress, const std::stop_token& stop) {
    constexpr std::size_t blockSize = 1 << 20;
    const auto copy = files_.create(to);
    const std::uint64_t size = files_.size(from);
    for (std::uint64_t at = 0; at < size; at += blockSize) {
        if (stop.stop_requested())
            throw CancellationError();
        copy->append(files_.read(from, at, blockSize));
        if (progress)
            progress(
                std::min(1.0, static_cast<double>(at + blockSize) / static_cast<double>(size)));
    }
    copy->synchronize();
    copy->close();
}

/// Runs one step of an audio export. If it fails or is cancelled, removes the output; a failure
/// becomes a HistoryExportError.
void HistoryExport::runAudioStep(const std::filesystem::path& unfinished,
                                 const std::filesystem::path& to,
                                 const std::function<void()>& step) {
    try {
        step();
    } catch (const std::exception& error) {
        try {
            files_.remove(unfinished);
        } catch (const std::exception&) { // the first error is the one to report
        }
        if (dynamic_cast<const CancellationError*>(&error))
            throw;
        throw HistoryExportError(ErrorKind::failed,
                                 failureText(Format::m4a, naming(to, unfinished, error.what())));
    }
}

std::string HistoryExport::suggestedFilename(const HistoryExportRequest& request) {
    const std::string extension(fileExtension(request.format));
    if (request.format == Format::m4a)
        return AudioExporter::suggestedFilename(request.recording.startedAt, request.recording.note,
                                                extension);
    const bool isBilingual = request.content == Content::bilingual;
    const bool isTranslation = request.content == Content::translation;
    return fileStem(request.recording) +
           (isBilingual     ? "-bilingual"
            : isTranslation ? "-translation"
                            : "") +
           "." + extension;
}

std::string_view HistoryExport::fileExtension(HistoryExportFormat format) {
    for (const auto& [each, extension] : extensions) {
        if (each == format)
            return extension;
    }
    return {};
}

std::optional<HistoryExportFormat> HistoryExport::formatOf(std::string_view fileExtension) {
    for (const auto& [each, extension] : extensions) {
        if (extension == fileExtension)
            return each;
    }
    return std::nullopt;
}

} // namespace tessarune
