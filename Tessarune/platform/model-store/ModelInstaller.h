#pragma once

#include "Tessarune/platform/model-store/Downloader.h"
#include "Tessarune/platform/model-store/ModelStore.h"

#include <functional>
#include <memory>

namespace tessarune {

/// Installs models: fetches their files, at most two at a time over all models, verifies them, and
/// gives the model's folder its final name once all are complete.
///
/// Main queue. Concurrent requests for a model fetch it once, also across processes: the second one
/// waits for the first and finds the model. The destructor stops running downloads; received bytes
/// are kept for the next request. The host and the store must outlive the installer and its
/// downloads.
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

    /// Returns why the model is unusable, or an empty text. A model is usable if any part of the
    /// store has it, all its checksums match, and its trial, if there is one, succeeds. Throws if
    /// the trial cannot be run.
    Task<std::string> flaw(ModelKind kind, std::string name, ModelTrial trial = {});

    /// Returns when the model is installed. Keeps an intact model. Replaces a damaged model once
    /// the download is complete. Removes a downloaded model that fails its trial. Throws exceptions
    /// whose texts can be shown. After a stop request, throws DownloadStopped; the download
    /// itself continues while another caller waits for it. `progress` is called on the main queue,
    /// a few times a second.
    Task<void> install(AvailableModel model, ProgressHandler progress, std::stop_token stop);

    const DownloadPolicy& policy() const;

  private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tessarune
