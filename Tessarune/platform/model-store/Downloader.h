#pragma once

#include "Tessarune/platform/model-store/AvailableModel.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/text/Localization.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// A failed download. The text names the file and can be shown.
struct DownloadFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// A download that was asked to stop.
struct DownloadStopped : DownloadFailed {
    DownloadStopped() : DownloadFailed(localized("The download was stopped.")) {}
};

/// A failed attempt that is followed by another.
struct DownloadTrouble {
    std::string name;   ///< of the file
    std::string reason; ///< for the user
    double secondsToNextTry = 0;
};

struct DownloadPolicy {
    double connectSeconds = 15;
    double stallSeconds = 20;
    /// Attempts in a row without any new bytes before it fails.
    int fruitlessTries = 6;
    /// The pause before the first retry; each further one is twice as long.
    double firstPauseSeconds = 1;
    double longestPauseSeconds = 60;
    /// Disk space that is left to the user.
    std::uint64_t spareBytes = 64'000'000;
    /// How often another process's download of the same model is checked.
    double lockPauseSeconds = 0.5;
    /// An address that replaces the servers of all files; empty for the servers themselves. See
    /// `mirrored`.
    std::string mirror = mirrorFromEnvironment();
    /// Returns such an address at each download if `mirror` is empty; called on the downloading
    /// thread. May be empty.
    std::function<std::string()> chosenMirror{};
    /// Reports each failed attempt, on the downloading thread. May be empty.
    std::function<void(const DownloadTrouble&)> onTrouble{};

    /// $TESSARUNE_MODEL_MIRROR, or empty.
    static std::string mirrorFromEnvironment();
    /// With the address chosen at each download, unless the environment names a mirror.
    static DownloadPolicy withMirror(std::function<std::string()> chosen);
    std::string currentMirror() const {
        return mirror.empty() && chosenMirror ? chosenMirror() : mirror;
    }
};

/// The address of a file on a mirror that keeps each server's files under the server's name, as
/// `wget --force-directories` writes them: https://host/path becomes <mirror>/host/path.
std::string mirrored(const std::string& url, const std::string& mirror);

/// Fetches and verifies single files, with as many attempts as it takes. Not thread-safe; each
/// fetch is confined to its executor and blocks it while bytes arrive.
class Downloader {
  public:
    Downloader(FileSystem& files, DownloadPolicy policy)
        : files_(files), policy_(std::move(policy)) {}

    /// Bytes of this file received so far, from the executor's thread.
    using Progress = std::function<void(std::uint64_t received)>;

    /// Fetches the file into the folder: under a temporary name (".part") until it is complete and
    /// verified, then under its own. Reuses an earlier attempt: keeps a valid file, continues a
    /// part. Removes an invalid one; if that was assembled from parts, fetches it once more.
    /// Resumes on `executor`. Throws DownloadFailed, and std::system_error if the disk fails.
    Task<void> fetch(Executor executor, FileToFetch file, std::filesystem::path folder,
                     Progress progress, std::stop_token stop);

    /// Fetches a list of at most `limit` bytes that is used at once and not stored; the failure's
    /// text has its name. Retries like `fetch`, always from the beginning. The caller must verify
    /// it. Resumes on `executor`.
    Task<std::string> fetchText(Executor executor, std::string name, std::string url,
                                std::uint64_t limit, std::stop_token stop);

    const DownloadPolicy& policy() const { return policy_; }
    FileSystem& files() const { return files_; }

  private:
    FileSystem& files_;
    DownloadPolicy policy_;
};

} // namespace tessarune
