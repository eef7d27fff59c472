#include "Tessarune/history/RecordingCatalog.h"

#include "Tessarune/history/RecordingIndex.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tessarune {

RecordingCatalog::RecordingCatalog(Host& host, FileSystem& files, TessarunePaths paths,
                                   TessaruneFileLogger& logger, NotificationCenter& notifications)
    : host_(host),
      files_(files),
      paths_(std::move(paths)),
      logger_(logger),
      notifications_(notifications),
      queue_(host.serialQueue("Tessarune.RecordingCatalog.index", QueuePriority::standard)) {}

RecordingCatalog::~RecordingCatalog() = default;

void RecordingCatalog::prepareDirectories() {
    files_.createDirectories(paths_.recordings());
    try {
        files_.createDirectories(paths_.diagnostics());
    } catch (const std::system_error&) { // recording works without diagnostics
    }
}

AudioSessionRecorder::Catalog RecordingCatalog::forRecorder() {
    AudioSessionRecorder::Catalog catalog;
    catalog.recordingsFolder = paths_.recordings();
    catalog.prepareDirectories = [this] { prepareDirectories(); };
    catalog.upsert = [this](const RecordingMetadata& recording) { return upsert(recording); };
    catalog.isNameTaken = [this](const std::string& baseName) {
        const auto all = recordings();
        return std::any_of(all.begin(), all.end(), [&](const RecordingMetadata& recording) {
            const std::filesystem::path audio(recording.filePath);
            return audio.parent_path() == paths_.recordings() && audio.stem() == baseName;
        });
    };
    return catalog;
}

bool RecordingCatalog::upsert(const RecordingMetadata& recording) {
    bool isDeleted = false;
    const bool saved = mutateIndex([&](RecordingIndex& index) {
        isDeleted = deleted_.contains(recording.id);
        if (isDeleted)
            return;
        RecordingMetadata changed = recording;
        if (const auto stored = index.find(recording.id)) {
            if (!changed.note)
                changed.note = stored->note;
            if (!changed.awaitsCompression)
                changed.awaitsCompression = stored->awaitsCompression;
        }
        if (changed.awaitsCompression == false) {
            changed.awaitsCompression.reset();
            toCompress_.erase(recording.id);
        } else if (toCompress_.contains(recording.id)) {
            changed.awaitsCompression = true;
        }
        index.put(changed);
        writeEntry(index, recording.id);
    });
    return saved && !isDeleted;
}

bool RecordingCatalog::markForCompression(bool awaitsCompression, const UUID& id) {
    queue_->sync([&] {
        toCompress_.erase(id);
        if (awaitsCompression)
            toCompress_.insert(id);
    });
    return mutateIndex([&](RecordingIndex& index) {
        auto recording = index.find(id);
        if (!recording)
            return;
        recording->awaitsCompression = awaitsCompression ? std::optional(true) : std::nullopt;
        index.put(*recording);
        writeEntry(index, id);
    });
}

bool RecordingCatalog::setNote(const std::string& note, const UUID& id) {
    return mutateIndex([&](RecordingIndex& index) {
        auto recording = index.find(id);
        if (!recording)
            return;
        recording->note = note.empty() ? std::nullopt : std::optional(note);
        index.put(*recording);
        writeEntry(index, id);
    });
}

bool RecordingCatalog::deleteRecording(const UUID& id, Runs runs) {
    return mutateIndex([&](RecordingIndex& index) {
        deleted_.insert(id);
        const auto recording = index.find(id);
        if (!recording)
            return;
        removeOwned(*recording, runs);
        index.removeIf([&](const RecordingMetadata& entry) { return entry.id == id; });
    });
}

bool RecordingCatalog::wasDeleted(const UUID& id) {
    bool isDeleted = false;
    queue_->sync([&] { isDeleted = deleted_.contains(id); });
    return isDeleted;
}

void RecordingCatalog::removeOwned(const RecordingMetadata& recording, Runs runs) {
    auto audio = audioArtifactURLs(recording);
    // An entry from elsewhere may name a folder, which must not be removed.
    std::erase_if(audio, [&](const auto& url) { return files_.isDirectory(url); });
    std::set<std::string> tokens;
    for (const auto& url : audio)
        tokens.insert({url.string(), url.filename().string()});
    // The diagnostics runs and log lines are removed first, because only the catalog entry leads to
    // them. If the deletion is interrupted before the sound is gone, the user can repeat it; if
    // later, the next launch removes the remaining files.
    if (runs == Runs::areRemoved) {
        for (const auto& run : diagnosticsRunURLs({recording.id}))
            removeRun(run);
    }
    logger_.deleteEntries({recording.id.text()}, tokens);
    bool isGone = true;
    for (const auto& url : audio)
        isGone = removeQuietly(url) && isGone;
    isGone = removeSidecars(recording.id) && isGone;
    if (!isGone)
        logger_.deleteEntries({recording.id.text()}, tokens); // lines about failed removals
}

/// The audio file and, if it is in the recordings folder, the same recording in our other formats.
std::vector<std::filesystem::path>
RecordingCatalog::audioArtifactURLs(const RecordingMetadata& recording) const {
    const std::filesystem::path audio(recording.filePath);
    std::set<std::filesystem::path> urls{audio};
    const auto folder = audio.parent_path().lexically_normal();
    if (folder == paths_.recordings().lexically_normal()) {
        for (const char* extension : {"wav", "m4a", "pcm"})
            urls.insert(std::filesystem::path(audio).replace_extension(extension));
    }
    return {urls.begin(), urls.end()};
}

/// Logs a failure instead of throwing, so that the other files are still removed. Returns whether
/// the file is gone.
bool RecordingCatalog::removeQuietly(const std::filesystem::path& path) {
    try {
        files_.remove(path);
        return true;
    } catch (const std::exception& error) {
        logger_.event("recording.remove.failed",
                      {{"path", path.string()}, {"error", std::string(error.what())}});
        return false;
    }
}

void RecordingCatalog::announceTranscript(const UUID& id) {
    notifications_.post(NotificationName::recordingTranscriptDidUpdate, id);
}

} // namespace tessarune
