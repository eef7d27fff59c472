#include "Tessarune/history/HistoryItemLoader.h"

#include "Tessarune/history/DurationTextFormatter.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <filesystem>
#include <optional>
#include <system_error>

namespace tessarune::HistoryItemLoader {

namespace {

std::optional<std::int64_t> sizeOf(FileSystem& files, const std::filesystem::path& path) {
    try {
        return static_cast<std::int64_t>(files.size(path));
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

/// The entry with the current size of its audio, or `nullopt` if it is not to be listed.
std::optional<RecordingMetadata> normalizedRecording(RecordingMetadata recording,
                                                     FileSystem& files) {
    const std::filesystem::path audio(recording.filePath);
    if (!files.exists(audio) || files.isDirectory(audio))
        return std::nullopt;
    if (const auto size = sizeOf(files, audio))
        recording.byteCount = *size;
    const std::string extension = Text::lowercased(audio.extension().string());
    // A compressed recording of at most `emptyCompressedSize` bytes contains no sound. An import
    // may be that small.
    if (extension == ".wav" || extension == ".pcm" || recording.isImport() ||
        recording.byteCount > emptyCompressedSize)
        return recording;
    return std::nullopt;
}

} // namespace

HistoryItem row(const RecordingMetadata& recording, RecordingCatalog& catalog, FileSystem& files) {
    const std::string locale = localized("zh_Hans_CN");
    const auto bilingual = sizeOf(files, catalog.bilingualTranscriptURL(recording.id));
    HistoryItem item;
    item.id = recording.id;
    item.recordingID = recording.id;
    item.live = !recording.endedAt;
    item.hasBilingualTranscript = bilingual.value_or(0) > 0;
    item.date = DateText::formatted(recording.startedAt, localized("yyyy年M月d日"), locale);
    item.time = DateText::formatted(recording.startedAt, "HH:mm:ss", locale);
    item.dur = DurationTextFormatter::compact(recording.duration);
    item.durationSeconds = recording.duration;
    item.words = recording.byteCount / 1024;
    item.note = recording.note.value_or("");
    item.filePath = recording.filePath;
    item.byteCount = recording.byteCount;
    item.startedAt = recording.startedAt;
    return item;
}

std::vector<HistoryItem> load(RecordingCatalog& catalog, FileSystem& files) {
    std::vector<HistoryItem> items;
    for (const auto& entry : catalog.recordings()) {
        if (const auto recording = normalizedRecording(entry, files))
            items.push_back(row(*recording, catalog, files));
    }
    return items;
}

} // namespace tessarune::HistoryItemLoader
