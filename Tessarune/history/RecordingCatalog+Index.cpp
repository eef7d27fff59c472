#include "Tessarune/history/RecordingCatalog+Loading.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <system_error>

namespace tessarune {

namespace {

constexpr std::string_view asideMark = ".unreadable-";

} // namespace

RecordingCatalog::LoadedIndex RecordingCatalog::loadIndex() {
    LoadedIndex loaded;
    try {
        loaded.bytes = files_.read(paths_.recordingIndex());
    } catch (const std::system_error& error) {
        const bool isMissing = error.code() == std::errc::no_such_file_or_directory;
        loaded.state = isMissing ? IndexState::missing : IndexState::unreadable;
        loaded.failure = isMissing ? nullptr : std::current_exception();
        return loaded;
    }
    if (auto index = RecordingIndex::decoded(loaded.bytes)) {
        loaded.state = IndexState::good;
        loaded.index = std::move(*index);
        findMovedSound(loaded.index);
    } else {
        loaded.state = IndexState::unreadable;
    }
    return loaded;
}

/// Corrects the paths in an index whose folder was moved, copied or restored from a backup. Such
/// paths still name the old folder, whose files may belong to another index. The sound beside this
/// index is used instead.
void RecordingCatalog::findMovedSound(RecordingIndex& index) {
    std::set<std::string> named; // filled on first use
    for (auto recording : index.recordings()) {
        const std::filesystem::path path(recording.filePath);
        if (path.parent_path() == paths_.recordings() || !path.has_filename())
            continue;
        const auto here = paths_.recordings() / path.filename();
        if (named.empty()) {
            for (const auto& each : index.recordings())
                named.insert(each.filePath);
        }
        if (named.contains(here.string()) || !files_.exists(here))
            continue;
        recording.filePath = here.string();
        index.put(recording);
    }
}

std::vector<RecordingMetadata> RecordingCatalog::recordings() {
    return loadIndex().index.recordings();
}

std::optional<RecordingMetadata> RecordingCatalog::recording(const UUID& id) {
    return loadIndex().index.find(id);
}

std::string RecordingCatalog::readingProblem() {
    const LoadedIndex loaded = loadIndex();
    try {
        if (loaded.failure)
            std::rethrow_exception(loaded.failure);
        if (loaded.state == IndexState::unreadable)
            return localized("The list of recordings (%@) is damaged. It will be rebuilt from the "
                             "recordings when the next session is recorded.",
                             {paths_.recordingIndex().string()});
        if (loaded.state == IndexState::missing && !entriesBesideTranscripts().empty())
            return localized("The list of recordings (%@) is missing. It will be rebuilt from the "
                             "recordings when the next session is recorded.",
                             {paths_.recordingIndex().string()});
        const auto damaged = loaded.index.damagedEntries();
        const bool hasNameless = loaded.index.hasNamelessElements();
        if (hasNameless || !damaged.empty()) {
            const auto found = forgotten(loaded.index).recordings();
            const auto restorable =
                std::ranges::count_if(found, [&](const RecordingMetadata& recording) {
                    return hasNameless || damaged.contains(recording.id);
                });
            if (restorable > 0)
                return localized(
                    "Damaged entries (%lld) were found in the list of recordings (%@). They will "
                    "be restored from copies when the next session is recorded.",
                    {std::to_string(restorable), paths_.recordingIndex().string()});
        }
        // Throws if the folder cannot be read. Without this check, its recordings would seem to be
        // missing.
        files_.list(paths_.recordings());
    } catch (const std::exception& error) {
        return localized("The recordings cannot be read: %@", {error.what()});
    }
    return {};
}

bool RecordingCatalog::mutateIndex(const std::function<void(RecordingIndex&)>& mutate) {
    bool saved = false;
    queue_->sync([&] {
        try {
            prepareDirectories();
            LoadedIndex loaded = loadIndex();
            // An index that cannot be read now may be readable later, so it is not replaced.
            if (loaded.failure)
                std::rethrow_exception(loaded.failure);
            if (loaded.state != IndexState::good) {
                keepAside(loaded.bytes);
                loaded.index = RecordingIndex::salvaged(loaded.bytes, entriesBesideTranscripts());
            }
            mutate(loaded.index);
            writeIndex(loaded.index);
            saved = true;
        } catch (const std::exception& error) {
            const std::string text = error.what();
            TessaruneLog::storage.fault(
                [&] { return "Tessarune failed to update recording catalog: " + text; });
        }
    });
    if (saved)
        notifications_.post(NotificationName::recordingCatalogDidChange);
    return saved;
}

void RecordingCatalog::writeIndex(RecordingIndex& index) {
    index.sort();
    files_.writeAtomically(paths_.recordingIndex(), index.encoded());
    try {
        indexWrittenAt_ = files_.modifiedAt(paths_.recordingIndex());
    } catch (const std::system_error&) { // `wasIndexChangedElsewhere` then returns true
        indexWrittenAt_ = 0;
    }
}

bool RecordingCatalog::wasIndexChangedElsewhere() {
    try {
        return files_.modifiedAt(paths_.recordingIndex()) != indexWrittenAt_;
    } catch (const std::system_error&) { // it is gone, or cannot be read
        return true;
    }
}

std::filesystem::path RecordingCatalog::asidePath() const {
    std::filesystem::path aside = paths_.recordingIndex();
    return aside += std::string(asideMark) +
                    DateText::formatted(host_.wallClock(), "yyyyMMdd-HHmmss", "en_US_POSIX");
}

bool RecordingCatalog::isAside(std::string_view name) const {
    return name.starts_with(paths_.recordingIndex().filename().string() + std::string(asideMark));
}

/// Writes `bytes`, an index that cannot be decoded, to a file beside the index. Returns the path of
/// this file; empty if `bytes` is blank. Throws if the file cannot be written.
std::filesystem::path RecordingCatalog::keepAside(const std::string& bytes) {
    if (Text::trimmed(bytes).empty())
        return {};
    auto aside = asidePath();
    files_.writeAtomically(aside, bytes);
    logger_.important("recording.catalog.unreadable", {{"keptAside", aside.string()}});
    return aside;
}

/// Renames an index that cannot be read from the disk, and therefore cannot be copied. Returns the
/// new path.
std::filesystem::path RecordingCatalog::moveAside() {
    auto aside = asidePath();
    files_.rename(paths_.recordingIndex(), aside);
    logger_.important("recording.catalog.unreadable", {{"keptAside", aside.string()}});
    return aside;
}

bool RecordingCatalog::deleteAll() {
    bool cleared = false;
    queue_->sync([&] {
        deleted_.merge(loadIndex().index.ids());
        // The sound goes last: if the deletion stops halfway, the history still lists the
        // recordings with sound, and the user can delete them again.
        for (const auto& folder :
             {paths_.transcripts(), paths_.diagnostics(), paths_.recordings()}) {
            try { // the content first: if the folder is a link, only the link is removed below
                for (const auto& name : files_.list(folder))
                    removeQuietly(folder / name);
            } catch (const std::system_error&) { // the folder is removed below
            }
            removeQuietly(folder);
        }
        try {
            for (const auto& name : files_.list(paths_.appSupportBase())) {
                if (isAside(name))
                    removeQuietly(paths_.appSupportBase() / name);
            }
            logger_.deleteAllLogs();
            prepareDirectories();
            RecordingIndex empty;
            writeIndex(empty);
            cleared = true;
        } catch (const std::exception& error) {
            const std::string text = error.what();
            TessaruneLog::storage.fault(
                [&] { return "Tessarune failed to clear recording catalog: " + text; });
        }
    });
    if (cleared)
        notifications_.post(NotificationName::recordingCatalogDidChange);
    return cleared;
}

} // namespace tessarune
