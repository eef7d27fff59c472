#include "Tessarune/history/RecordingRepair.h"

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/SessionJournalContent.h"
#include "Tessarune/shell/UnfinishedWrite.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include <algorithm>
#include <limits>
#include <set>

namespace tessarune {

namespace {

constexpr std::string_view journalSuffix = ".live.ndjson";

/// Whether the recorder wrote the file. In a file from elsewhere, other data may follow the sound.
bool isOurWAV(const RecordingMetadata& recording) {
    const std::filesystem::path audio(recording.filePath);
    return Text::lowercased(audio.extension().string()) == ".wav" &&
           recording.audioFormat.value_or(AudioSessionRecorder::audioFormat) ==
               AudioSessionRecorder::audioFormat;
}

/// The bytes of sound that a file of `size` holds, in complete frames.
std::uint64_t soundBytes(const WAVHeader& header, std::uint64_t size) {
    const std::uint64_t bytes = size > header.dataOffset ? size - header.dataOffset : 0;
    return bytes - bytes % (std::uint64_t{header.channels} * 2);
}

/// Whether the recorder gives this name, "<day>-<time>" or "<day>-<time>-<number>", to a recording.
bool isNameOfSession(std::string_view name) {
    constexpr std::string_view form = "00000000-000000";
    std::string digits(name.substr(0, form.size()));
    std::ranges::replace_if(
        digits, [](char c) { return c >= '0' && c <= '9'; }, '0');
    const std::string_view rest = name.substr(digits.size());
    return digits == form &&
           (rest.empty() || (rest.size() > 1 && rest.front() == '-' &&
                             rest.find_first_not_of("0123456789", 1) == std::string_view::npos));
}

/// Whether the name is one that the M4A writer or an import gives to an unfinished file.
bool isUnfinishedSound(const std::string& name) {
    const std::filesystem::path part(name);
    const std::filesystem::path sound = part.stem(); // the name of the finished file
    const auto import = UUID::parse(sound.stem().string());
    return part.extension() == ".part" && sound.has_extension() &&
           ((sound.extension() == ".m4a" && isNameOfSession(sound.stem().string())) ||
            (import && import->text() == sound.stem()));
}

bool hasTranslation(const SessionJournalContent& journal) {
    return std::any_of(journal.rows.begin(), journal.rows.end(), [](const CaptionSegment& row) {
        return row.translatedText && !Text::trimmed(*row.translatedText).empty();
    });
}

} // namespace

RecordingRepair::RecordingRepair(FileSystem& files, RecordingCatalog& catalog,
                                 TessaruneFileLogger& logger)
    : files_(files), catalog_(catalog), logger_(logger) {}

RecordingRepair::Report RecordingRepair::runAtLaunch() {
    Report report;
    report.rebuiltIndex = catalog_.rebuildUnreadableIndex();
    removeUnfinishedFiles();
    completeReplacements();
    for (const auto& recording : catalog_.recordings()) {
        if (isUnfinished(recording) && finishSession(recording))
            report.recoveredSessions.push_back(recording.id);
    }
    restoreTranscripts();
    removeReplacedSound();
    catalog_.healStaleRecordings();
    report.removedWithoutSound = catalog_.reconcileIndex();
    catalog_.cleanupOrphanTranscripts();
    sortImports(report);
    return report;
}

/// Reports imports without a transcript, and those whose transcription or translation was
/// interrupted by the end of the program. If the end was unexpected, the import may have caused it;
/// the import then gets an empty transcript if it has none, so that only the user starts another
/// attempt.
void RecordingRepair::sortImports(Report& report) {
    using Mark = RecordingCatalog::TranscriptionMark;
    for (const RecordingMetadata& recording : catalog_.recordings()) {
        if (!files_.exists(recording.filePath))
            continue; // its disk may not be mounted; the mark stays
        const bool hasText = files_.exists(catalog_.transcriptURL(recording.id));
        const Mark mark = catalog_.transcriptionMark(recording.id);
        if (mark == Mark::running) {
            if (hasText || catalog_.saveTranscript("", recording.id))
                catalog_.markTranscription(Mark::none, recording.id);
            report.brokenOffImports.push_back(recording);
        } else if (recording.isImport() && (!hasText || mark == Mark::interrupted)) {
            report.untranscribedImports.push_back(recording);
        }
    }
}

/// Whether the file still has to be measured: its entry has no end, or counts no sound although the
/// file has some. An entry can have an end and count no sound if an earlier repair could not read
/// the file: `healStaleRecordings` then computed the end from the entry's duration alone.
bool RecordingRepair::isUnfinished(const RecordingMetadata& recording) {
    if (!isOurWAV(recording) || !files_.exists(recording.filePath))
        return false;
    constexpr auto empty = static_cast<std::int64_t>(WAVHeader::size);
    try {
        return !recording.endedAt ||
               (recording.byteCount <= empty && files_.size(recording.filePath) > WAVHeader::size);
    } catch (const std::exception&) {
        return false;
    }
}

/// Writes the true length into the file's header and the entry.
bool RecordingRepair::finishSession(RecordingMetadata recording) {
    try {
        const std::uint64_t size = files_.size(recording.filePath);
        const WAVHeader header = repairedHeader(recording, size);
        recording.duration =
            static_cast<double>(header.dataSize) / static_cast<double>(header.bytesPerSecond());
        recording.byteCount =
            static_cast<std::int64_t>(std::max<std::uint64_t>(size, WAVHeader::size));
        recording.sampleRate = header.sampleRate;
        recording.channelCount = header.channels;
        recording.endedAt = recording.startedAt + recording.duration;
    } catch (const std::exception& error) {
        logger_.important("recording.repair.failed", {{"recordingID", recording.id.text()},
                                                      {"path", recording.filePath},
                                                      {"error", std::string(error.what())}});
        return false;
    }
    if (!catalog_.upsert(recording))
        return false;
    logger_.important("recording.repair.done", {{"recordingID", recording.id.text()},
                                                {"path", recording.filePath},
                                                {"duration", recording.duration},
                                                {"byteCount", recording.byteCount}});
    return true;
}

/// Returns the file's header. If it is wrong, corrects it in the file first.
WAVHeader RecordingRepair::repairedHeader(const RecordingMetadata& recording, std::uint64_t size) {
    const auto found =
        WAVHeader::decoded(files_.read(recording.filePath, 0, WAVHeader::sizeToRead));
    WAVHeader header = found.value_or(WAVHeader());
    if (!found)
        header.sampleRate = static_cast<std::uint32_t>(
            std::clamp<std::int64_t>(recording.sampleRate.value_or(0), 0, 768000));
    if (header.sampleRate == 0)
        header.sampleRate = AudioSessionRecorder::sampleRate;
    header.dataSize = soundBytes(header, size);
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    if (found && std::min(header.dataSize, largest) == found->dataSize)
        return header;
    // In a complete header of another layout than ours, only the size of the sound is corrected.
    // Any other header is replaced by ours.
    const auto file = size < WAVHeader::size ? files_.create(recording.filePath)
                                             : files_.openForAppending(recording.filePath);
    if (size < WAVHeader::size)
        file->append(header.encoded());
    else if (!found || header.dataOffset == WAVHeader::size)
        file->overwrite(0, header.encoded());
    else
        file->overwrite(header.dataOffset - 4, WAVHeader::encodedSize(header.dataSize));
    file->synchronize();
    file->close();
    return header;
}

/// Writes the missing transcripts of sessions from their journals.
void RecordingRepair::restoreTranscripts() {
    std::vector<std::string> names;
    try {
        names = files_.list(catalog_.paths().transcripts());
    } catch (const std::exception&) {
        return; // nothing can be done without the folder
    }
    for (const auto& name : names) {
        const auto id = UUID::parse(std::string_view(name).substr(0, name.find('.')));
        // A journal without an entry is left to the removal of orphans.
        if (id && name == id->text() + std::string(journalSuffix) && catalog_.recording(*id))
            restoreTranscripts(*id);
    }
}

void RecordingRepair::restoreTranscripts(const UUID& id) {
    try {
        const auto journal = SessionJournalContent::decoded(files_.read(catalog_.journalURL(id)));
        const bool isWritten = writeTranscripts(id, journal);
        logger_.important("recording.repair.transcripts",
                          {{"recordingID", id.text()},
                           {"rows", static_cast<std::int64_t>(journal.rows.size())},
                           {"unreadableLines", static_cast<std::int64_t>(journal.unreadableLines)},
                           {"saved", isWritten}});
        if (isWritten)
            files_.remove(catalog_.journalURL(id));
    } catch (const std::exception& error) {
        logger_.important("recording.repair.failed", {{"recordingID", id.text()},
                                                      {"path", catalog_.journalURL(id).string()},
                                                      {"error", std::string(error.what())}});
    }
}

/// Writes only missing transcripts. A transcript that the session saved contains more than its
/// journal.
bool RecordingRepair::writeTranscripts(const UUID& id, const SessionJournalContent& journal) {
    bool isWritten = true;
    if (!files_.exists(catalog_.transcriptURL(id)))
        isWritten = catalog_.saveTranscript(SessionTranscriptBuilder::sourceText(journal.rows), id);
    if (hasTranslation(journal) && !files_.exists(catalog_.bilingualTranscriptURL(id)))
        isWritten = catalog_.saveBilingualTranscript(
                        SessionTranscriptBuilder::bilingualText(journal.rows), id) &&
                    isWritten;
    if (!files_.exists(catalog_.wordTimelineURL(id)))
        isWritten =
            catalog_.saveWordTimeline(HistoryWordTimeline::build(journal.recordingStartedAt,
                                                                 journal.recognitionOptionID,
                                                                 journal.rows, journal.wordEvents),
                                      id) &&
            isWritten;
    return isWritten;
}

/// Removes the remains of a process that ended while it wrote a file that only the program that
/// holds the data folder writes. The user may keep other files in the same folders, so only
/// ordinary files with exactly the names that the program gives are removed.
void RecordingRepair::removeUnfinishedFiles() {
    const auto& paths = catalog_.paths();
    const auto isUnfinishedFile = [&](const auto& folder, const std::string& name) {
        if (folder == paths.recordings())
            return isUnfinishedSound(name);
        const auto write = UnfinishedWrite::parse(name);
        if (!write || folder == paths.transcripts())
            return write && catalog_.isSidecar(write->name);
        return write->name == paths.recordingIndex().filename().string() ||
               catalog_.isAside(write->name);
    };
    for (const auto& folder : {paths.appSupportBase(), paths.recordings(), paths.transcripts()}) {
        try {
            for (const auto& name : files_.list(folder)) {
                if (isUnfinishedFile(folder, name))
                    files_.removeFile(folder / name);
            }
        } catch (const std::exception& error) {
            logger_.important("recording.repair.failed",
                              {{"path", folder.string()}, {"error", std::string(error.what())}});
        }
    }
}

/// Removes the WAV of each session whose entry names the complete M4A that was made from it.
void RecordingRepair::removeReplacedSound() {
    const std::vector<RecordingMetadata> all = catalog_.recordings();
    std::set<std::string> named;
    for (const RecordingMetadata& recording : all)
        named.insert(recording.filePath);
    for (const RecordingMetadata& recording : all) {
        const std::filesystem::path audio(recording.filePath);
        const auto wav = std::filesystem::path(audio).replace_extension("wav");
        if (recording.audioFormat != M4A::audioFormat || audio.extension() != ".m4a" ||
            audio.parent_path() != catalog_.paths().recordings() || named.contains(wav.string()))
            continue;
        try {
            if (files_.exists(wav) &&
                files_.size(audio) == static_cast<std::uint64_t>(recording.byteCount))
                files_.remove(wav);
        } catch (const std::exception& error) {
            logger_.important("recording.repair.failed", {{"recordingID", recording.id.text()},
                                                          {"path", wav.string()},
                                                          {"error", std::string(error.what())}});
        }
    }
}

/// Finishes or undoes interrupted replacements of a transcript by a refined one. A replacement
/// moves its files into place one by one, the text first.
///
/// If the text has been moved, the other files are moved as well. An empty file means that the new
/// transcript has no such sidecar: the old sidecar is removed.
///
/// If the text has not been moved, no file has, and all files of the replacement are removed. The
/// text is removed last: if it alone were missing, the next launch would move the other files.
void RecordingRepair::completeReplacements() {
    const auto& folder = catalog_.paths().transcripts();
    try {
        std::vector<std::string> names = files_.list(folder);
        std::erase_if(names, [&](const std::string& name) {
            return !name.ends_with(RecordingCatalog::replacementSuffix) ||
                   !catalog_.isSidecar(name);
        });
        const auto textOf = [&](const std::string& name) {
            const auto text = std::filesystem::path(name.substr(0, name.find('.')) + ".txt");
            return RecordingCatalog::replacementOf(text).string();
        };
        const std::set<std::string> all(names.begin(), names.end());
        std::ranges::stable_partition(
            names, [&](const std::string& name) { return name != textOf(name); });
        for (const std::string& name : names) {
            const bool isMoved = !all.contains(textOf(name));
            const auto sidecar = folder / std::filesystem::path(name).stem();
            if (isMoved && files_.size(folder / name) > 0) {
                files_.rename(folder / name, sidecar);
                continue;
            }
            if (isMoved)
                files_.removeFile(sidecar);
            files_.removeFile(folder / name);
        }
    } catch (const std::exception& error) {
        logger_.important("recording.repair.failed",
                          {{"path", folder.string()}, {"error", std::string(error.what())}});
    }
}

} // namespace tessarune
