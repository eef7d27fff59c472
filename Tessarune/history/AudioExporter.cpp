#include "Tessarune/history/AudioExporter.h"

#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

namespace {

using ExportError = AudioExporter::ExportError;
using Kind = ExportError::Kind;

std::string description(Kind kind, const std::string& detail) {
    switch (kind) {
    case Kind::cannotCreateReader:
    case Kind::missingSource:
    case Kind::noAudioTrack:
        return localized("无法读取录音：%@", {detail});
    case Kind::cannotCreateWriter:
        return localized("无法创建 M4A：%@", {detail});
    case Kind::exportFailed:
        return localized("导出失败：%@", {detail});
    }
    return detail;
}

[[noreturn]] void rethrow(const MediaFileError& error) {
    switch (error.kind()) {
    case MediaFileError::Kind::cancelled:
        throw CancellationError();
    case MediaFileError::Kind::cannotOpen:
        throw ExportError(Kind::missingSource, error.what());
    case MediaFileError::Kind::noAudioTrack:
        throw ExportError(Kind::noAudioTrack, error.what());
    case MediaFileError::Kind::notMedia:
    case MediaFileError::Kind::unsupported:
    case MediaFileError::Kind::damaged:
        throw ExportError(Kind::cannotCreateReader, error.what());
    case MediaFileError::Kind::cannotCreate:
        throw ExportError(Kind::cannotCreateWriter, error.what());
    case MediaFileError::Kind::writeFailed:
        break;
    }
    throw ExportError(Kind::exportFailed, error.what());
}

} // namespace

AudioExporter::ExportError::ExportError(Kind kind, const std::string& detail)
    : std::runtime_error(description(kind, detail)), kind_(kind) {}

AudioExporter::AudioExporter(Host& host, TranscodeToM4A transcode)
    : host_(host),
      transcode_(std::make_shared<const TranscodeToM4A>(std::move(transcode))),
      queue_(host.serialQueue("Tessarune.audio.m4aWriter", QueuePriority::standard)) {}

Task<void> AudioExporter::transcodeToM4A(std::filesystem::path from, std::filesystem::path to,
                                         MediaProgress progress, std::stop_token stop) {
    // The coroutine may outlive the exporter, so it keeps its own reference.
    const auto transcode = transcode_;
    try {
        co_await runOn(Executor::queue(host_, queue_),
                       [&] { (*transcode)(from, to, progress, stop); });
    } catch (const MediaFileError& error) {
        rethrow(error);
    }
}

std::string_view AudioExporter::withinFileName(std::string_view text) {
    // A disk allows names of 255 bytes. The other 55 are for suffixes, such as those of unfinished
    // files.
    constexpr std::size_t maximumBytes = 200;
    if (text.size() <= maximumBytes)
        return text;
    text = Text::withoutCutCharacter(text.substr(0, maximumBytes));
    // The last character may have lost code points, such as its accents.
    return text.substr(0, text.size() - Text::lastCharacter(text).size());
}

std::string AudioExporter::suggestedFilename(double startedAt, std::string_view note,
                                             std::string_view ext) {
    std::string base = Text::collapsingWhiteSpace(withinFileName(Text::trimmed(note)));
    for (char& character : base) {
        if (std::string_view("/\\?%*|\"<>:").find(character) != std::string_view::npos)
            character = '_';
    }
    if (base.empty())
        base = DateText::formatted(startedAt, localized("yyyy年M月d日HH时mm分ss秒"), "zh_Hans_CN");
    return base + "." + std::string(ext);
}

} // namespace tessarune
