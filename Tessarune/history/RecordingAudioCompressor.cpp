#include "Tessarune/history/RecordingAudioCompressor.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <cmath>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

using CompressionError = RecordingAudioCompressor::CompressionError;

std::string description(CompressionError::Kind kind, const std::string& path) {
    switch (kind) {
    case CompressionError::Kind::missingSource:
        return localized("找不到待压缩录音：%@", {path});
    case CompressionError::Kind::missingOutput:
        return localized("压缩完成但找不到 M4A 文件：%@", {path});
    case CompressionError::Kind::missingOutputSize:
        return localized("无法读取 M4A 文件大小：%@", {path});
    }
    return path;
}

std::filesystem::path destinationOf(const std::filesystem::path& source) {
    std::filesystem::path destination = source;
    if (source.extension() == ".wav")
        return destination.replace_extension("m4a");
    return destination += ".m4a";
}

} // namespace

RecordingAudioCompressor::CompressionError::CompressionError(Kind kind, const std::string& path)
    : std::runtime_error(description(kind, path)), kind_(kind) {}

RecordingAudioCompressor::RecordingAudioCompressor(FileSystem& files, RecordingCatalog& catalog,
                                                   TessaruneFileLogger& logger,
                                                   AudioExporter& exporter, OpenMediaFile open)
    : files_(files),
      catalog_(catalog),
      logger_(logger),
      exporter_(exporter),
      open_(std::move(open)) {}

Task<RecordingMetadata> RecordingAudioCompressor::compressWAVToM4A(RecordingMetadata recording,
                                                                   bool deleteSource,
                                                                   MediaProgress progress,
                                                                   std::stop_token stop) {
    const std::filesystem::path source(recording.filePath);
    if (!files_.exists(source))
        throw CompressionError(CompressionError::Kind::missingSource, source.string());
    const auto destination = destinationOf(source);
    {
        Task<void> transcoding =
            exporter_.transcodeToM4A(source, destination, std::move(progress), stop);
        co_await transcoding;
    }
    recording.byteCount = checkedSize(recording, destination);
    recording.filePath = destination.string();
    recording.audioFormat = "m4a/aac";
    recording.sampleRate = M4A::sampleRate;
    recording.channelCount = M4A::channels;
    // Without its WAV an entry that still names it would be dropped at the next start.
    if (!catalog_.upsert(recording))
        discard(destination, catalog_.paths().recordingIndex().string());
    if (deleteSource)
        removeSource(recording, source, destination);
    co_return recording;
}

std::int64_t RecordingAudioCompressor::checkedSize(const RecordingMetadata& recording,
                                                   const std::filesystem::path& output) {
    if (!files_.exists(output))
        throw CompressionError(CompressionError::Kind::missingOutput, output.string());
    std::uint64_t size = 0;
    try {
        size = files_.size(output);
    } catch (const std::system_error&) {
        throw CompressionError(CompressionError::Kind::missingOutputSize, output.string());
    }
    if (!lastsAsLong(recording, output))
        discard(output, output.string());
    return static_cast<std::int64_t>(size);
}

/// The sound is about to exist only there: a file that is not as long as what was recorded is no
/// replacement.
bool RecordingAudioCompressor::lastsAsLong(const RecordingMetadata& recording,
                                           const std::filesystem::path& output) {
    try {
        const auto duration = open_(output)->duration();
        return duration && std::abs(*duration - recording.duration) <= durationTolerance;
    } catch (const MediaFileError&) {
        return false;
    }
}

void RecordingAudioCompressor::discard(const std::filesystem::path& output,
                                       const std::string& why) {
    try {
        files_.remove(output);
    } catch (const std::system_error&) { // it stays beside the WAV and goes with it
    }
    throw AudioExporter::ExportError(AudioExporter::ExportError::Kind::exportFailed, why);
}

void RecordingAudioCompressor::removeSource(const RecordingMetadata& recording,
                                            const std::filesystem::path& source,
                                            const std::filesystem::path& destination) {
    try {
        files_.remove(source);
    } catch (const std::exception& error) {
        logger_.important("audio.compress.removeSource.failed",
                          {{"recordingID", recording.id.text()},
                           {"sourcePath", source.string()},
                           {"destinationPath", destination.string()},
                           {"error", std::string(error.what())}});
    }
}

} // namespace tessarune
