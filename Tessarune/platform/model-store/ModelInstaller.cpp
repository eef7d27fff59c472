#include "Tessarune/platform/model-store/ModelInstaller.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <set>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t filesAtATime = 2;
constexpr double secondsBetweenReports = 0.2;

using Key = std::pair<ModelKind, std::string>;

/// The installation of one model, shared by all callers that wait for it. Main queue unless noted
/// otherwise.
struct Job {
    explicit Job(AvailableModel what) : model(std::move(what)), received(model.files.size()) {}

    AvailableModel model;
    std::stop_source stop;
    std::exception_ptr failure; ///< the first failure of a file
    std::size_t nextFile = 0;

    struct Waiter {
        ModelInstaller::ProgressHandler progress;
        OneShot<std::exception_ptr> outcome;
    };
    std::map<std::size_t, Waiter> waiters;
    std::size_t nextWaiter = 0;

    std::vector<std::atomic<std::uint64_t>> received; ///< for each file; any thread
    std::atomic<double> lastReport = 0;               ///< host time; any thread

    ModelInstaller::Progress progress() const {
        ModelInstaller::Progress sum;
        bool isKnown = true;
        for (std::size_t i = 0; i < received.size(); ++i) {
            sum.received += received[i];
            sum.expected += model.files[i].bytes;
            isKnown = isKnown && model.files[i].bytes != 0;
        }
        if (!isKnown)
            sum.expected = 0;
        return sum;
    }

    void report() const {
        const auto currentWaiters = waiters; // a handler may cancel another wait
        for (const auto& [number, waiter] : currentWaiters) {
            if (waiter.progress)
                waiter.progress(progress());
        }
    }
};

void checkNames(const AvailableModel& model) {
    std::set<std::string> names;
    bool isValid = ModelStore::isSafeName(model.name) && !model.files.empty();
    for (const FileToFetch& file : model.files)
        isValid = isValid && ModelStore::isSafeName(file.name) && names.insert(file.name).second;
    if (!isValid || names.contains("model.json"))
        throw DownloadFailed(
            localized("The list of files of the model %@ is invalid.", {model.name}));
}

std::string megabytes(std::uint64_t bytes) {
    return std::to_string(bytes / 1'000'000 + (bytes % 1'000'000 != 0 ? 1 : 0)) + " MB";
}

std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    return a > largest - b ? largest : a + b;
}

} // namespace

struct ModelInstaller::Shared {
    Shared(Host& itsHost, ModelStore& itsStore, DownloadPolicy policy)
        : host(itsHost),
          main(Executor::main(itsHost)),
          store(itsStore),
          downloader(itsStore.files(), std::move(policy)) {}

    Host& host;
    Executor main;
    ModelStore& store;
    Downloader downloader;
    /// Queues for the downloads; created on first use. A download blocks its queue.
    std::vector<std::shared_ptr<SerialQueue>> lanes;
    std::shared_ptr<SerialQueue> checks; ///< for checksums of existing files; created on first use
    std::map<Key, std::shared_ptr<Job>> jobs;

    using Pointer = std::shared_ptr<Shared>;
    using JobPointer = std::shared_ptr<Job>;

    static Task<std::string> flaw(Pointer self, ModelKind kind, std::string name,
                                  ModelTrial trial) {
        const std::optional<StoredModel> found = self->store.find(kind, name);
        if (!found)
            co_return localized("%@ is not on this computer.", {name});
        if (!found->damage.empty())
            co_return found->damage;
        if (!self->checks)
            self->checks = self->host.serialQueue("tessarune.check", QueuePriority::utility);
        const Executor checks = Executor::queue(self->host, self->checks);
        try {
            co_await runOn(checks, [&] { ModelStore::verify(*found); });
            if (trial)
                co_await trial(*found);
        } catch (const ModelDamaged& damage) {
            std::string why = damage.what();
            TessaruneLog::app.notice([&] { return why; });
            co_return why;
        }
        co_return std::string();
    }

    /// Returns the running job for this model, or starts one.
    static JobPointer jobFor(const Pointer& self, AvailableModel model) {
        JobPointer& job = self->jobs[Key(model.kind, model.name)];
        if (!job) {
            job = std::make_shared<Job>(std::move(model));
            spawn(self->main, run(self, job), job->stop);
        }
        return job;
    }

    void forget(const JobPointer& job) {
        const auto known = jobs.find(Key(job->model.kind, job->model.name));
        if (known != jobs.end() && known->second == job)
            jobs.erase(known);
    }

    static Task<void> run(Pointer self, JobPointer job) {
        std::exception_ptr failure;
        try {
            co_await fetchAndInstall(self, job);
        } catch (...) {
            failure = std::current_exception();
        }
        self->forget(job);
        if (!failure)
            job->report();
        for (const auto& [number, waiter] : job->waiters)
            waiter.outcome.resume(failure);
    }

    static Task<void> fetchAndInstall(Pointer self, JobPointer job) {
        const AvailableModel& model = job->model;
        ModelStore& store = self->store;
        std::optional<FileLock> lock;
        while (!(lock = store.tryToLock(model.kind, model.name))) {
            if (!co_await sleep(self->main, self->downloader.policy().lockPauseSeconds,
                                job->stop.get_token()))
                throw DownloadStopped();
        }
        // Another process may have installed the model meanwhile.
        const std::string currentFlaw = co_await flaw(self, model.kind, model.name, model.trial);
        if (currentFlaw.empty())
            co_return;
        store.files().createDirectories(store.partialFolder(model.kind, model.name));
        self->checkFreeSpace(model);
        co_await fetchAll(self, job);
        if (model.trial)
            co_await tryDownloaded(self, job);
        // Checksums of hundreds of megabytes: not on the main queue.
        const Executor lane = Executor::queue(self->host, self->lanes.front());
        co_await runOn(lane,
                       [&] { store.adopt(model.kind, model.name, namesOf(model), model.details); });
    }

    static std::vector<std::string> namesOf(const AvailableModel& model) {
        std::vector<std::string> names;
        names.reserve(model.files.size());
        for (const FileToFetch& file : model.files)
            names.push_back(file.name);
        return names;
    }

    /// Runs the trial: files with correct checksums can still be unusable.
    static Task<void> tryDownloaded(Pointer self, JobPointer job) {
        const AvailableModel& model = job->model;
        StoredModel downloaded;
        downloaded.kind = model.kind;
        downloaded.name = model.name;
        downloaded.folder = self->store.partialFolder(model.kind, model.name);
        downloaded.details = model.details;
        for (const std::string& name : namesOf(model))
            downloaded.files.push_back({name, self->store.files().size(downloaded.path(name)), ""});
        std::string flaw;
        try {
            co_await model.trial(downloaded);
        } catch (const ModelDamaged& damage) {
            flaw = damage.what();
        }
        if (flaw.empty())
            co_return;
        self->store.files().remove(downloaded.folder);
        throw DownloadFailed(localized("The downloaded model %@ cannot be used and was removed: %@",
                                       {model.name, flaw}));
    }

    void checkFreeSpace(const AvailableModel& model) const {
        const std::filesystem::path partial = store.partialFolder(model.kind, model.name);
        std::uint64_t needed = downloader.policy().spareBytes;
        for (const FileToFetch& file : model.files) {
            const std::uint64_t unpacked =
                file.isZstd ? std::max(file.unpackedBytes, file.bytes) : 0;
            needed = saturatingSum(needed, saturatingSum(file.bytes, unpacked));
        }
        for (const std::string& name : store.files().list(partial))
            needed -= std::min(needed, store.files().size(partial / name));
        const std::uint64_t free = store.files().freeSpace(partial);
        if (free < needed)
            throw DownloadFailed(
                localized("Not enough disk space for the model %@: %@ are needed, %@ are free.",
                          {model.name, megabytes(needed), megabytes(free)}));
    }

    static Task<void> fetchAll(Pointer self, JobPointer job) {
        while (self->lanes.size() < filesAtATime)
            self->lanes.push_back(
                self->host.serialQueue("tessarune.download", QueuePriority::utility));
        std::vector<TaskHandle> fetching;
        for (const auto& lane : self->lanes)
            fetching.push_back(
                spawn(self->main, fetchOnLane(self, job, Executor::queue(self->host, lane))));
        for (TaskHandle& handle : fetching)
            co_await handle.finished();
        if (job->failure)
            std::rethrow_exception(job->failure);
    }

    /// Fetches one file after the other, each time the next that no lane has taken.
    static Task<void> fetchOnLane(Pointer self, JobPointer job, Executor lane) {
        while (job->nextFile < job->model.files.size() && !job->failure) {
            const std::size_t index = job->nextFile++;
            const std::filesystem::path folder =
                self->store.partialFolder(job->model.kind, job->model.name);
            const Downloader::Progress progress = [self, job, index](std::uint64_t received) {
                self->recordProgress(job, index, received);
            };
            std::exception_ptr failure;
            try {
                co_await runOn(lane,
                               self->downloader.fetch(lane, job->model.files[index], folder,
                                                      progress, job->stop.get_token()),
                               self->main);
            } catch (...) {
                failure = std::current_exception();
            }
            if (failure && !job->failure) {
                job->failure = failure;
                job->stop.request_stop(); // without this file, the others are useless
            }
        }
    }

    /// Stores and reports progress. Any thread.
    void recordProgress(const JobPointer& job, std::size_t file, std::uint64_t bytes) const {
        job->received[file] = bytes;
        const double now = host.now();
        if (now - job->lastReport < secondsBetweenReports)
            return;
        job->lastReport = now;
        host.post([job] { job->report(); });
    }
};

ModelInstaller::ModelInstaller(Host& host, ModelStore& store, DownloadPolicy policy)
    : shared_(std::make_shared<Shared>(host, store, std::move(policy))) {}

ModelInstaller::~ModelInstaller() {
    for (const auto& [key, job] : shared_->jobs)
        job->stop.request_stop();
    // Waits for running work: a job without waiters may still use the disk.
    for (const auto& lane : shared_->lanes)
        lane->sync([] {});
    if (shared_->checks)
        shared_->checks->sync([] {});
}

const DownloadPolicy& ModelInstaller::policy() const {
    return shared_->downloader.policy();
}

Task<std::string> ModelInstaller::flaw(ModelKind kind, std::string name, ModelTrial trial) {
    return Shared::flaw(shared_, kind, std::move(name), std::move(trial));
}

Task<void> ModelInstaller::install(AvailableModel model, ProgressHandler progress,
                                   std::stop_token stop) {
    const std::shared_ptr<Shared> shared = shared_;
    checkNames(model);
    const std::string flaw = co_await Shared::flaw(shared, model.kind, model.name, model.trial);
    if (flaw.empty())
        co_return;
    if (stop.stop_requested())
        throw DownloadStopped();
    const std::shared_ptr<Job> job = Shared::jobFor(shared, std::move(model));
    const std::size_t number = job->nextWaiter++;
    OneShot<std::exception_ptr> outcome(shared->main);
    job->waiters.emplace(number, Job::Waiter{std::move(progress), outcome});
    std::exception_ptr failure;
    {
        std::stop_callback onStop(
            stop, [outcome] { outcome.resume(std::make_exception_ptr(DownloadStopped())); });
        failure = co_await outcome;
    }
    job->waiters.erase(number);
    if (job->waiters.empty()) {
        // Nobody waits any more. A later request starts a new job, which waits for this one to end.
        shared->forget(job);
        job->stop.request_stop();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace tessarune
