#include "Tessarune/history/RecordingCatalog+Loading.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <algorithm>
#include <system_error>

namespace tessarune {

std::optional<RecordingCatalog::IndexRebuild> RecordingCatalog::rebuildUnreadableIndex() {
    try {
        LoadedIndex loaded = loadIndex();
        if (loaded.failure)
            loaded = loadIndex();
        if (loaded.state == IndexState::good)
            return std::nullopt;
        const auto entries = entriesBesideTranscripts();
        if (loaded.state == IndexState::missing && entries.empty())
            return std::nullopt;
        IndexRebuild rebuild;
        rebuild.keptAside = loaded.failure ? moveAside() : keepAside(loaded.bytes);
        RecordingIndex index = RecordingIndex::salvaged(loaded.bytes, entries);
        rebuild.recordings = index.recordings().size();
        writeIndex(index);
        logger_.important("recording.catalog.rebuilt",
                          {{"recordings", static_cast<std::int64_t>(rebuild.recordings)},
                           {"keptAside", rebuild.keptAside.string()}});
        return rebuild;
    } catch (const std::exception& error) {
        const std::string text = error.what();
        TessaruneLog::storage.fault(
            [&] { return "Tessarune failed to rebuild recording catalog: " + text; });
        return std::nullopt;
    }
}

void RecordingCatalog::healStaleRecordings() {
    RecordingIndex index = loadIndex().index;
    bool changed = false;
    for (auto recording : index.recordings()) {
        if (recording.endedAt)
            continue;
        recording.endedAt = recording.startedAt + recording.duration;
        index.put(recording);
        changed = true;
    }
    if (!changed)
        return;
    try {
        writeIndex(index);
    } catch (const std::exception&) { // the next launch heals it
    }
}

/// A disk error does not prove that a file is missing.
bool RecordingCatalog::isSurelyMissing(const std::filesystem::path& path) {
    try {
        if (!files_.exists(path))
            files_.size(path);
        return false;
    } catch (const std::system_error& error) {
        return error.code() == std::errc::no_such_file_or_directory ||
               error.code() == std::errc::not_a_directory;
    }
}

/// Whether the folder of the recordings is empty or cannot be listed, for example because its disk
/// is not mounted.
bool RecordingCatalog::hasNoSound() {
    try {
        return files_.list(paths_.recordings()).empty();
    } catch (const std::system_error&) {
        return true;
    }
}

std::size_t RecordingCatalog::reconcileIndex() {
    const auto isMissing = [&](const RecordingMetadata& recording) {
        return isSurelyMissing(recording.filePath);
    };
    const auto all = recordings();
    const auto missing = std::count_if(all.begin(), all.end(), isMissing);
    if (missing == 0)
        return 0;
    const bool isUnmounted = missing > 1 && missing == std::ssize(all) && hasNoSound();
    // A deletion would have removed the sidecars as well; an unmounted disk leaves them.
    const auto isGone = [&](const RecordingMetadata& recording) {
        return isMissing(recording) &&
               !(isUnmounted && (files_.exists(entryURL(recording.id)) ||
                                 files_.exists(transcriptURL(recording.id))));
    };
    const auto gone = std::count_if(all.begin(), all.end(), isGone);
    if (gone == 0)
        return 0;
    const bool isSaved = mutateIndex([&](RecordingIndex& index) { index.removeIf(isGone); });
    TessaruneLog::storage.notice([&] {
        return "Tessarune catalog reconcile: pruned " + std::to_string(gone) +
               " missing-audio entries";
    });
    return isSaved ? static_cast<std::size_t>(gone) : 0;
}

void RecordingCatalog::cleanupOrphanTranscripts() {
    const LoadedIndex loaded = loadIndex();
    if (loaded.state != IndexState::good)
        return;
    try {
        const auto known = relistForgotten(loaded.index);
        // If the index may still be incomplete, no transcript may be removed as an orphan.
        const auto names = files_.list(paths_.appSupportBase());
        if (loaded.index.hasNamelessElements() ||
            std::any_of(names.begin(), names.end(),
                        [&](const std::string& name) { return isAside(name); }))
            return;
        const std::size_t count = removeOrphans(known);
        if (count > 0) {
            TessaruneLog::storage.notice([&] {
                return "Tessarune catalog cleanup: removed " + std::to_string(count) +
                       " orphan transcript sidecar(s)";
            });
        }
        removeUnlistedImports(known);
    } catch (const std::exception&) { // the next launch retries
    }
}

/// The recordings that the index `listed` lacks, because it is older than they are (it may come
/// from a backup) or because their entries are damaged. They are found by the copies of their
/// entries. Unfinished recordings and those without sound are left out.
RecordingIndex RecordingCatalog::forgotten(const RecordingIndex& listed) {
    std::set<UUID> known;
    for (const RecordingMetadata& recording : listed.recordings())
        known.insert(recording.id);
    RecordingIndex forgotten = RecordingIndex::salvaged({}, entriesBesideTranscripts(known));
    findMovedSound(forgotten);
    forgotten.removeIf([&](const RecordingMetadata& recording) {
        return !recording.endedAt || !files_.exists(recording.filePath);
    });
    return forgotten;
}

/// Lists forgotten recordings again. Returns all ids that are known afterwards.
std::set<UUID> RecordingCatalog::relistForgotten(const RecordingIndex& listed) {
    std::set<UUID> known = listed.ids();
    const auto found = forgotten(listed).recordings();
    if (found.empty())
        return known;
    mutateIndex([&](RecordingIndex& index) {
        for (const RecordingMetadata& recording : found)
            index.put(recording);
    });
    for (const RecordingMetadata& recording : found) {
        known.insert(recording.id);
        logger_.important("recording.catalog.foundAgain", {{"recordingID", recording.id.text()}});
    }
    return known;
}

std::filesystem::path RecordingCatalog::unlistedImportMark(const std::filesystem::path& sound) {
    return sound.string() + ".importing";
}

/// Removes the sound of imports that ended between their copy and their entry. Without its mark, a
/// sound file stays, because it may be the only trace of a recording.
void RecordingCatalog::removeUnlistedImports(const std::set<UUID>& known) {
    for (const auto& name : files_.list(paths_.recordings())) {
        const std::filesystem::path mark = paths_.recordings() / name;
        const std::filesystem::path sound = paths_.recordings() / mark.stem();
        const auto id = UUID::parse(sound.stem().string());
        if (!id || mark != unlistedImportMark(sound))
            continue;
        if (!known.contains(*id))
            files_.removeFile(sound);
        files_.removeFile(mark);
    }
}

/// Removes the transcripts whose names begin with a UUID that is not in `known`. Never removes a
/// folder. Returns the number of orphans, including those that could not be removed; the next
/// launch tries to remove these again.
std::size_t RecordingCatalog::removeOrphans(const std::set<UUID>& known) {
    const std::filesystem::path folder = paths_.transcripts();
    std::size_t count = 0;
    for (const auto& name : files_.list(folder)) {
        const std::size_t dot = name.find('.');
        if (dot == std::string::npos)
            continue;
        const auto id = UUID::parse(std::string_view(name).substr(0, dot));
        if (!id || known.contains(*id))
            continue;
        try {
            if (!files_.removeFile(folder / name))
                continue;
        } catch (const std::exception& error) {
            logger_.event("recording.remove.failed", {{"path", (folder / name).string()},
                                                      {"error", std::string(error.what())}});
        }
        ++count;
    }
    return count;
}

} // namespace tessarune
