#include "Tessarune/refinement/HistoryImportCoordinator.h"

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t bytesPerRead = std::size_t{4} << 20U;
/// The space on the disk that a copy must leave free.
constexpr std::uint64_t reservedBytes = std::uint64_t{16} << 20U;
constexpr const char* defaultExtension = "m4a";

/// The extension without its dot. A missing or unusual extension is replaced by the default, and so
/// is "part", which marks unfinished files.
std::string extensionOf(const std::filesystem::path& source) {
    std::string extension = source.extension().string();
    if (extension.starts_with('.'))
        extension.erase(0, 1);
    const bool isPlain = std::ranges::all_of(extension, [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') ||
               (letter >= 'A' && letter <= 'Z');
    });
    const bool isOurs = Text::lowercased(extension) == "part";
    return extension.empty() || !isPlain || isOurs ? defaultExtension : extension;
}

} // namespace

HistoryImportCoordinator::HistoryImportCoordinator(Environment environment)
    : environment_(std::move(environment)),
      queue_(environment_.host.serialQueue("Tessarune.HistoryImport", QueuePriority::utility)) {
    // This notification is posted when a recording gets its text. The translation of the text may
    // still be in progress. The handler may run on another thread while this object is destroyed,
    // so it only queues a call.
    transcripts_ = environment_.notifications.observe(
        NotificationName::recordingTranscriptDidUpdate,
        [this, &host = environment_.host,
         alive = std::weak_ptr<bool>(alive_)](const NotificationObject& object) {
            const auto* id = std::get_if<UUID>(&object);
            if (!id)
                return;
            host.post([this, alive, changed = *id] {
                if (alive.lock())
                    finished(changed);
            });
        });
    jobs_ = environment_.refinement.jobs().onDidChange([this](const auto& jobs) {
        const std::set<UUID> waiting = *transcribingIDs_;
        for (const UUID& id : waiting) {
            if (!jobs.contains(id))
                finished(id); // successfully or not
        }
    });
}

HistoryImportCoordinator::~HistoryImportCoordinator() {
    environment_.refinement.jobs().remove(jobs_);
    ending_.request_stop();
    queue_->sync([] {});
}

Task<std::vector<HistoryImportCoordinator::Problem>>
HistoryImportCoordinator::importAudio(std::vector<std::filesystem::path> files,
                                      std::stop_token stop) {
    std::vector<Problem> problems;
    for (const std::filesystem::path& file : files) {
        try {
            Task<RecordingMetadata> making = makeRecording(file, stop);
            const RecordingMetadata recording = co_await making;
            if (!enter(recording))
                throw std::runtime_error(localized("the recordings cannot be written"));
            startTranscription(recording.id, recording.filePath);
            environment_.notifications.post(NotificationName::historyImportSelectRecording,
                                            recording.id);
        } catch (const CancellationError&) {
            break;
        } catch (const std::exception& error) {
            problems.push_back({file, error.what()});
        }
    }
    co_return problems;
}

Task<RecordingMetadata> HistoryImportCoordinator::makeRecording(std::filesystem::path source,
                                                                std::stop_token stop) {
    const UUID id = UUID::random();
    RecordingMetadata recording;
    std::exception_ptr failure;
    copied_ = 0.0;
    try {
        co_await runOn(Executor::queue(environment_.host, queue_),
                       [&] { recording = copy(source, id, stop); });
    } catch (...) {
        failure = std::current_exception();
    }
    copied_ = std::nullopt;
    if (!failure)
        co_return recording;
    environment_.logger.important(
        "history.import.copyFailed",
        {{"source", source.string()}, {"error", localizedDescription(failure)}});
    std::rethrow_exception(failure);
}

/// Throws unless the file has sound and its copy fits on the disk.
void HistoryImportCoordinator::requireSound(const std::filesystem::path& source) const {
    FileSystem& files = environment_.files;
    const auto isEmpty = [&] {
        try {
            return files.isDirectory(source) || files.size(source) == 0;
        } catch (const std::system_error&) { // a pipe or a device has no size
            return true;
        }
    };
    // A missing file is reported by the attempt to open it.
    if (files.exists(source) && isEmpty())
        throw MediaFileError(MediaFileError::Kind::cannotOpen,
                             localized("%@ is empty or not a file", {source.string()}));
    environment_.openMedia(source);
    const std::uint64_t needed = files.size(source) + reservedBytes;
    const std::filesystem::path recordings = environment_.catalog.paths().recordings();
    if (files.freeSpace(recordings) < needed)
        throw std::system_error(std::make_error_code(std::errc::no_space_on_device),
                                recordings.string());
}

RecordingMetadata HistoryImportCoordinator::copy(const std::filesystem::path& source,
                                                 const UUID& id, const std::stop_token& stop) {
    FileSystem& files = environment_.files;
    // An absolute path, because "-" would be the standard input.
    const std::filesystem::path from = std::filesystem::absolute(source);
    environment_.catalog.prepareDirectories();
    requireSound(from);
    const std::string extension = extensionOf(from);
    const std::filesystem::path to =
        environment_.catalog.paths().recordings() / (id.text() + "." + extension);
    RecordingMetadata recording;
    try {
        const std::unique_ptr<AppendFile> mark =
            files.create(RecordingCatalog::unlistedImportMark(to));
        mark->synchronize();
        mark->close();
        copyBytes(from, to, stop);
        const std::unique_ptr<MediaFile> media = environment_.openMedia(to);
        const double duration = media->duration().value_or(0);
        recording.duration = std::isfinite(duration) ? duration : 0;
        recording.sampleRate = std::llround(media->format().sampleRate);
        recording.channelCount = media->format().channels;
        recording.byteCount = static_cast<std::int64_t>(files.size(to));
    } catch (...) {
        removeQuietly(to);
        removeQuietly(RecordingCatalog::unlistedImportMark(to));
        throw;
    }
    recording.id = id;
    recording.startedAt = environment_.host.wallClock();
    recording.endedAt = recording.startedAt + recording.duration;
    recording.filePath = to.string();
    recording.audioFormat = Text::lowercased(extension);
    if (std::string name = from.stem().string(); !name.empty() && Text::isValidUTF8(name))
        recording.note = std::move(name);
    return recording;
}

/// Returns the next bytes of the source. Throws MediaFileError, because std::system_error stands
/// for failures of the data folder's disk.
std::string HistoryImportCoordinator::read(const std::filesystem::path& source,
                                           std::uint64_t from) const {
    try {
        return environment_.files.read(source, from, bytesPerRead);
    } catch (const std::system_error& error) {
        throw MediaFileError(MediaFileError::Kind::damaged, error.what());
    }
}

/// The copy gets its final name when it is complete. After a crash, the next launch of the program
/// removes the unfinished copy.
void HistoryImportCoordinator::copyBytes(const std::filesystem::path& source,
                                         const std::filesystem::path& to,
                                         const std::stop_token& stop) {
    FileSystem& files = environment_.files;
    std::filesystem::path part = to;
    part += ".part";
    const auto size = static_cast<double>(files.size(source));
    try {
        const std::unique_ptr<AppendFile> file = files.create(part);
        std::uint64_t copied = 0;
        for (;;) {
            if (stop.stop_requested() || ending_.stop_requested())
                throw CancellationError();
            const std::string bytes = read(source, copied);
            if (bytes.empty())
                break;
            file->append(bytes);
            copied += bytes.size();
            const double fraction = std::min(static_cast<double>(copied) / size, 1.0);
            environment_.host.post([this, alive = std::weak_ptr<bool>(alive_), fraction] {
                if (alive.lock() && *copied_)
                    copied_ = fraction;
            });
        }
        file->synchronize();
        file->close();
        files.rename(part, to);
    } catch (...) {
        removeQuietly(part);
        throw;
    }
}

void HistoryImportCoordinator::removeQuietly(const std::filesystem::path& path) const {
    try {
        environment_.files.remove(path);
    } catch (const std::exception& error) {
        environment_.logger.event("recording.remove.failed",
                                  {{"path", path.string()}, {"error", std::string(error.what())}});
    }
}

bool HistoryImportCoordinator::enter(const RecordingMetadata& recording) {
    const bool isListed = environment_.catalog.upsert(recording);
    if (!isListed)
        removeQuietly(recording.filePath);
    removeQuietly(RecordingCatalog::unlistedImportMark(recording.filePath));
    if (!isListed)
        return false;
    environment_.logger.event("history.import.created",
                              {{"recordingID", recording.id.text()},
                               {"durationSeconds", recording.duration},
                               {"format", recording.audioFormat.value_or("")}});
    return true;
}

void HistoryImportCoordinator::startTranscription(const UUID& recordingID,
                                                  const std::string& audioPath) {
    const auto request =
        HistoryRefinementRequest::current(environment_.settings, recordingID, audioPath);
    if (!request || !environment_.hasRecogniser()) {
        environment_.logger.event("history.import.transcribeUnavailable",
                                  {{"recordingID", recordingID.text()}});
        return;
    }
    transcribingIDs_.mutate([&](std::set<UUID>& ids) { ids.insert(recordingID); });
    environment_.refinement.schedule(request);
}

void HistoryImportCoordinator::finished(const UUID& id) {
    if (transcribingIDs_->contains(id))
        transcribingIDs_.mutate([&](std::set<UUID>& ids) { ids.erase(id); });
}

} // namespace tessarune
