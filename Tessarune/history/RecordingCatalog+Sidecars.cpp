#include "Tessarune/history/RecordingCatalog+Loading.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <sstream>

namespace tessarune {

namespace {

constexpr std::string_view entrySuffix = ".recording.json";
/// The content of the mark of an interrupted transcription; the mark of a running transcription is
/// empty.
constexpr std::string_view interruptedMark = "interrupted\n";

/// Whether all lines of `part` occur in `text`, in their order.
bool hasAllLinesOf(std::string_view text, std::string_view part) {
    std::istringstream lines{std::string(text)};
    std::istringstream wanted{std::string(part)};
    std::string line;
    for (std::string next; std::getline(wanted, next);) {
        do {
            if (!std::getline(lines, line))
                return false;
        } while (line != next);
    }
    return true;
}

} // namespace

std::filesystem::path RecordingCatalog::sidecar(const UUID& id, std::string_view suffix) const {
    return paths_.transcripts() / (id.text() + std::string(suffix));
}
std::filesystem::path RecordingCatalog::transcriptURL(const UUID& id) const {
    return sidecar(id, ".txt");
}
std::filesystem::path RecordingCatalog::bilingualTranscriptURL(const UUID& id) const {
    return sidecar(id, ".bilingual.txt");
}
std::filesystem::path RecordingCatalog::wordTimelineURL(const UUID& id) const {
    return sidecar(id, ".words.json");
}
std::filesystem::path RecordingCatalog::journalURL(const UUID& id) const {
    return sidecar(id, ".live.ndjson");
}
std::filesystem::path RecordingCatalog::transcriptionMarkURL(const UUID& id) const {
    return sidecar(id, ".transcribing");
}
std::filesystem::path RecordingCatalog::compressionMarkURL(const UUID& id) const {
    return sidecar(id, ".compressing");
}
std::filesystem::path RecordingCatalog::entryURL(const UUID& id) const {
    return sidecar(id, entrySuffix);
}

std::filesystem::path RecordingCatalog::replacementOf(const std::filesystem::path& sidecar) {
    std::filesystem::path replacement = sidecar;
    return replacement += replacementSuffix;
}

bool RecordingCatalog::saveTranscript(std::string_view text, const UUID& id) {
    return saveSidecar({"source", "recording.transcript.source.saveFailed"}, id, transcriptURL(id),
                       [&] { writeSidecar(transcriptURL(id), text); });
}

bool RecordingCatalog::saveBilingualTranscript(std::string_view text, const UUID& id) {
    return saveSidecar({"bilingual", "recording.transcript.bilingual.saveFailed"}, id,
                       bilingualTranscriptURL(id), [&] { write(newBilingual(text, id)); });
}

bool RecordingCatalog::saveWordTimeline(const std::optional<HistoryWordTimeline>& timeline,
                                        const UUID& id) {
    return saveSidecar({"wordTimeline", "recording.transcript.timeline.saveFailed"}, id,
                       wordTimelineURL(id), [&] { write(newTimeline(timeline, id)); });
}

void RecordingCatalog::writeSidecar(const std::filesystem::path& path, std::string_view content) {
    files_.createDirectories(path.parent_path());
    files_.writeAtomically(path, content);
}

RecordingCatalog::NewSidecar RecordingCatalog::newBilingual(std::string_view text,
                                                            const UUID& id) const {
    const std::string_view trimmed = Text::trimmed(text);
    if (trimmed.empty())
        return {bilingualTranscriptURL(id), std::nullopt};
    return {bilingualTranscriptURL(id), std::string(trimmed)};
}

RecordingCatalog::NewSidecar
RecordingCatalog::newTimeline(const std::optional<HistoryWordTimeline>& timeline,
                              const UUID& id) const {
    if (!timeline || timeline->isEmpty())
        return {wordTimelineURL(id), std::nullopt};
    return {wordTimelineURL(id), timeline->encoded()};
}

void RecordingCatalog::write(const NewSidecar& sidecar) {
    if (sidecar.content)
        writeSidecar(sidecar.path, *sidecar.content);
    else
        files_.remove(sidecar.path);
}

/// A former text with new times would be wrong, and so would the reverse. Therefore all new files
/// are complete on the disk before the first of them, always the text, replaces its predecessor. An
/// empty new file stands for a sidecar that is removed. If the program ends after the text was
/// replaced, RecordingRepair replaces the other files at the next launch.
void RecordingCatalog::replaceTogether(const std::vector<NewSidecar>& sidecars) {
    bool isComplete = false;
    try {
        for (const auto& [path, content] : sidecars)
            writeSidecar(replacementOf(path), content.value_or(""));
        isComplete = true;
        for (const auto& [path, content] : sidecars) {
            if (content) {
                files_.rename(replacementOf(path), path);
            } else {
                files_.remove(path);
                files_.remove(replacementOf(path));
            }
        }
    } catch (...) {
        // Once the text is replaced, the other new files stay, and the next launch moves them into
        // place. A rename can report a failure and still replace the text.
        if (!isComplete || files_.exists(replacementOf(sidecars.front().path))) {
            for (const auto& sidecar : sidecars)
                removeQuietly(replacementOf(sidecar.path));
        }
        throw;
    }
}

/// A failure is logged and has no other effect, because the entry beside the transcripts is only a
/// copy for later repairs.
void RecordingCatalog::writeEntry(const RecordingIndex& index, const UUID& id) {
    if (const auto entry = index.encodedEntry(id))
        saveSidecar({"entry", "recording.entry.saveFailed"}, id, entryURL(id),
                    [&] { writeSidecar(entryURL(id), *entry); });
}

bool RecordingCatalog::saveSidecar(SidecarKind kind, const UUID& id,
                                   const std::filesystem::path& path,
                                   const std::function<void()>& save) {
    try {
        save();
        return true;
    } catch (const std::exception& error) {
        recordSidecarSaveFailure(kind, id, path, error);
        return false;
    }
}

void RecordingCatalog::recordSidecarSaveFailure(SidecarKind kind, const UUID& id,
                                                const std::filesystem::path& path,
                                                const std::exception& error) {
    const std::string text = error.what();
    TessaruneLog::storage.fault([&] {
        return std::string("Tessarune failed to save ") + kind.kind + " transcript sidecar for " +
               id.text() + ": " + text;
    });
    logger_.important(kind.event, {{"recordingID", id.text()},
                                   {"kind", std::string(kind.kind)},
                                   {"path", path.string()},
                                   {"error", text}});
}

/// Writes a mark, or removes it if there is no content.
bool RecordingCatalog::saveMark(const std::filesystem::path& mark,
                                std::optional<std::string> content, const UUID& id) {
    bool isSaved = false;
    queue_->sync([&] {
        if (deleted_.contains(id))
            content.reset();
        isSaved = saveSidecar({"mark", "recording.mark.saveFailed"}, id, mark, [&] {
            write({mark, content});
        });
    });
    return isSaved;
}

bool RecordingCatalog::markTranscription(TranscriptionMark mark, const UUID& id) {
    std::optional<std::string> content;
    if (mark != TranscriptionMark::none)
        content.emplace(mark == TranscriptionMark::interrupted ? interruptedMark : "");
    return saveMark(transcriptionMarkURL(id), std::move(content), id);
}

RecordingCatalog::TranscriptionMark RecordingCatalog::transcriptionMark(const UUID& id) const {
    const auto path = transcriptionMarkURL(id);
    try {
        if (!files_.exists(path))
            return TranscriptionMark::none;
        return files_.read(path) == interruptedMark ? TranscriptionMark::interrupted
                                                    : TranscriptionMark::running;
    } catch (const std::system_error&) {
        return TranscriptionMark::running;
    }
}

std::size_t RecordingCatalog::compressionAttempts(const UUID& id) const {
    const auto mark = compressionMarkURL(id);
    try {
        return files_.exists(mark) ? static_cast<std::size_t>(files_.size(mark)) : 0;
    } catch (const std::system_error&) {
        return 0;
    }
}

bool RecordingCatalog::setCompressionAttempts(std::size_t attempts, const UUID& id) {
    return saveMark(compressionMarkURL(id),
                    attempts > 0 ? std::optional(std::string(attempts, '.')) : std::nullopt, id);
}

/// The paths of all sidecars that the recording can have.
std::vector<std::filesystem::path> RecordingCatalog::sidecars(const UUID& id) const {
    std::vector<std::filesystem::path> all;
    for (const auto& path : {transcriptURL(id), bilingualTranscriptURL(id), wordTimelineURL(id)})
        all.insert(all.end(), {path, replacementOf(path)});
    all.insert(all.end(),
               {journalURL(id), transcriptionMarkURL(id), compressionMarkURL(id), entryURL(id)});
    return all;
}

bool RecordingCatalog::isSidecar(std::string_view name) const {
    const auto id = UUID::parse(name.substr(0, name.find('.')));
    return id && std::ranges::count(sidecars(*id), paths_.transcripts() / name) > 0;
}

/// Removes all sidecars of the recording. Returns whether they are gone.
bool RecordingCatalog::removeSidecars(const UUID& id) {
    bool isGone = true;
    for (const auto& path : sidecars(id))
        isGone = removeQuietly(path) && isGone;
    return isGone;
}

RecordingTranscriptSaveOutcome
RecordingCatalog::saveRefinedTranscript(std::string_view sourceText, std::string_view bilingualText,
                                        const std::optional<HistoryWordTimeline>& wordTimeline,
                                        const UUID& id) {
    return saveGuarded({"refined", "recording.transcript.refined.saveFailed"}, "refinement", id,
                       {{transcriptURL(id), std::string(sourceText)},
                        newBilingual(bilingualText, id),
                        newTimeline(wordTimeline, id)});
}

RecordingTranscriptSaveOutcome RecordingCatalog::saveRefinedSourceTranscript(
    std::string_view sourceText, const std::optional<HistoryWordTimeline>& wordTimeline,
    const UUID& id) {
    return saveGuarded(
        {"refinedSource", "recording.transcript.refinedSource.saveFailed"}, "source refinement", id,
        {{transcriptURL(id), std::string(sourceText)}, newTimeline(wordTimeline, id)});
}

RecordingTranscriptSaveOutcome
RecordingCatalog::saveGuarded(SidecarKind kind, std::string_view what, const UUID& id,
                              const std::vector<NewSidecar>& sidecars) {
    using Outcome = RecordingTranscriptSaveOutcome;
    Outcome outcome = Outcome::skippedDeleted;
    queue_->sync([&] {
        const bool succeeded = saveSidecar(kind, id, paths_.transcripts(), [&] {
            LoadedIndex loaded = loadIndex();
            // While the index cannot be read, it is unknown whether the recording still exists. The
            // save then fails, and the former transcripts stay.
            if (loaded.failure)
                std::rethrow_exception(loaded.failure);
            if (loaded.state != IndexState::good)
                loaded.index = RecordingIndex::salvaged(loaded.bytes, entriesBesideTranscripts());
            if (!loaded.index.ids().contains(id))
                return;
            replaceTogether(sidecars);
            refined_.insert(id);
            outcome = Outcome::saved;
        });
        if (!succeeded)
            outcome = Outcome::failed;
    });
    if (outcome == Outcome::saved)
        announceTranscript(id);
    if (outcome == Outcome::skippedDeleted) {
        removeSidecars(id);
        TessaruneLog::storage.notice([&] {
            return "Tessarune " + std::string(what) + " skipped: recording " + id.text() +
                   " was deleted";
        });
    }
    return outcome;
}

/// The transcript on the disk; `nullopt` if there is none or it cannot be read.
std::optional<std::string> RecordingCatalog::storedText(const UUID& id) const {
    try {
        return files_.read(transcriptURL(id));
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

RecordingCatalog::TranscriptUpdate
RecordingCatalog::updateTranscripts(std::string_view sourceText, std::string_view bilingualText,
                                    const UUID& id) {
    return update(
        id, [&](const std::string& stored) { return stored == sourceText; },
        [&](TranscriptUpdate& update) {
            update.sourceSaved = saveTranscript(sourceText, id);
            update.bilingualSaved = saveBilingualTranscript(bilingualText, id);
        });
}

RecordingCatalog::TranscriptUpdate
RecordingCatalog::saveTranscriptsAgain(std::string_view sourceText, std::string_view bilingualText,
                                       const std::optional<HistoryWordTimeline>& wordTimeline,
                                       const UUID& id) {
    return update(
        id, [&](const std::string& stored) { return hasAllLinesOf(sourceText, stored); },
        [&](TranscriptUpdate& update) {
            update.sourceSaved =
                saveTranscript(sourceText, id) && saveWordTimeline(wordTimeline, id);
            update.bilingualSaved = saveBilingualTranscript(bilingualText, id);
        });
}

/// Calls `save` if the recording is listed and was not refined. `isFormerText` returns whether a
/// stored text comes from the session, not from a refinement. Without a readable index, the outcome
/// is `failed`.
RecordingCatalog::TranscriptUpdate
RecordingCatalog::update(const UUID& id,
                         const std::function<bool(const std::string&)>& isFormerText,
                         const std::function<void(TranscriptUpdate&)>& save) {
    using Outcome = RecordingTranscriptSaveOutcome;
    TranscriptUpdate update;
    queue_->sync([&] {
        const LoadedIndex loaded = loadIndex();
        const bool isListed = loaded.index.find(id).has_value();
        const std::optional<std::string> stored = storedText(id);
        if (refined_.contains(id) || (stored && !isFormerText(*stored))) {
            update.outcome = Outcome::skippedRefined;
        } else if (deleted_.contains(id) || (loaded.state == IndexState::good && !isListed)) {
            update.outcome = Outcome::skippedDeleted;
        } else if (isListed) {
            save(update);
            update.outcome =
                update.sourceSaved && update.bilingualSaved ? Outcome::saved : Outcome::failed;
        }
    });
    if (update.outcome == Outcome::saved)
        announceTranscript(id);
    return update;
}

/// The entries beside the transcripts as JSON, except those of the recordings in `known`.
std::vector<std::string> RecordingCatalog::entriesBesideTranscripts(const std::set<UUID>& known) {
    std::vector<std::string> entries;
    for (const auto& name : files_.list(paths_.transcripts())) {
        if (!name.ends_with(entrySuffix))
            continue;
        const auto id = UUID::parse(name.substr(0, name.size() - entrySuffix.size()));
        if (id && known.contains(*id))
            continue;
        try {
            entries.push_back(files_.read(paths_.transcripts() / name));
        } catch (const std::exception& error) { // one bad file does not affect the others
            logger_.important("recording.entry.readFailed",
                              {{"path", name}, {"error", std::string(error.what())}});
        }
    }
    return entries;
}

} // namespace tessarune
