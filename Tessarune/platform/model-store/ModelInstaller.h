#pragma once

#include "Tessarune/platform/model-store/Downloader.h"
#include "Tessarune/platform/model-store/ModelStore.h"

#include <functional>
#include <memory>

namespace tessarune {

/// Brings models into the store: fetches their files, at most two at a time over all models, checks
/// them and gives the model its name once all are whole and right.
///
/// Main queue. A model that is asked for twice is fetched once, also by two processes: the second
/// waits for the first and finds it there. Dropping the installer stops what is under way; what has
/// arrived is kept for the next time. Host and store must outlive both.
class ModelInstaller {
  public:
    struct Progress {
        std::uint64_t received = 0;
        std::uint64_t expected = 0; ///< 0 if a file's size is unknown
    };
    using ProgressHandler = std::function<void(Progress)>;

    ModelInstaller(Host& host, ModelStore& store, DownloadPolicy policy = {});
    ~ModelInstaller();
    ModelInstaller(const ModelInstaller&) = delete;
    ModelInstaller& operator=(const ModelInstaller&) = delete;

    /// Why the model is of no use; empty if it stands in the store, in whatever part of it, all its
    /// sums are right and the trial, if there is one, does not fail.
    Task<std::string> flaw(ModelKind kind, std::string name, ModelTrial trial = {});

    /// Returns when the model stands in the store: a sound one stays, another is replaced once the
    /// new one is whole. A new one that fails its trial is removed. Throws an exception with a text
    /// that can be shown: DownloadStopped if `stop` asks for it, and the download goes on only as
    /// long as somebody waits for it. `progress` is called on the main queue, a few times a second.
    Task<void> install(AvailableModel model, ProgressHandler progress, std::stop_token stop);

    const DownloadPolicy& policy() const;

  private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tessarune
