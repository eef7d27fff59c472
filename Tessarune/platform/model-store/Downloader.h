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

/// A failed download. The text can be shown.
struct DownloadFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// A download that ended at a request to stop.
struct DownloadStopped : DownloadFailed {
    DownloadStopped() : DownloadFailed(localized("The download was stopped.")) {}
};

/// A failed attempt after which the download is tried again.
struct DownloadTrouble {
    std::string name;   ///< of the file
    std::string reason; ///< for the user
    double secondsToNextTry = 0;
};

struct DownloadPolicy {
    double connectSeconds = 15;
    double stallSeconds = 20;
    /// A download fails after more than this many attempts in a row without new bytes.
    int fruitlessTries = 6;
    /// The pause before the first retry. It doubles after each further attempt without new bytes.
    double firstPauseSeconds = 1;
    double longestPauseSeconds = 60;
    /// Disk space that must remain free.
    std::uint64_t spareBytes = 64'000'000;
    /// The pause between two checks of whether another process still downloads the same model.
    double lockPauseSeconds = 0.5;
    /// An address that replaces the servers of all files; empty for the original servers. See
    /// `mirrored`.
    std::string mirror = mirrorFromEnvironment();
    /// Called for each download if `mirror` is empty, on the downloading thread. Returns the
    /// address of a mirror, or an empty text for the original servers. May be empty.
    std::function<std::string()> chosenMirror{};
    /// Reports each failed attempt but the last, on the downloading thread. May be empty.
    std::function<void(const DownloadTrouble&)> onTrouble{};

    /// $TESSARUNE_MODEL_MIRROR, or empty.
    static std::string mirrorFromEnvironment();
    /// A policy that calls `chosen` for each download, unless the environment names a mirror.
    static DownloadPolicy withMirror(std::function<std::string()> chosen);
    std::string currentMirror() const {
        return mirror.empty() && chosenMirror ? chosenMirror() : mirror;
    }
};

/// The address of a file on a mirror that keeps each server's files under the server's name, as
/// `wget --force-directories` writes them: https://host/path becomes <mirror>/host/path.
std::string mirrored(const std::string& url, const std::string& mirror);

/// Fetches and verifies single files, and retries after failures. Each fetch runs on its own
/// executor and blocks it while bytes arrive; fetches of different files may run at the same time.
class Downloader {
  public:
    Downloader(FileSystem& files, DownloadPolicy policy)
        : files_(files), policy_(std::move(policy)) {}

    /// Reports the bytes of this file received so far, on the executor's thread.
    using Progress = std::function<void(std::uint64_t received)>;

    /// Fetches the file into the folder: under a temporary name (".part") until it is complete and
    /// verified, then under its own. Reuses an earlier attempt: keeps a valid file, continues a
    /// partial one. Removes an invalid file; if it was assembled in several attempts, fetches it
    /// once more. Resumes on `executor`. Throws DownloadFailed, std::system_error if the disk
    /// fails, and std::runtime_error if a library cannot be used.
    Task<void> fetch(Executor executor, FileToFetch file, std::filesystem::path folder,
                     Progress progress, std::stop_token stop);

    /// Fetches a text of at most `limit` bytes without storing it; `name` is its name in the text
    /// of a failure. Retries like `fetch`, always from the beginning. The caller must verify the
    /// result. Resumes on `executor`.
    Task<std::string> fetchText(Executor executor, std::string name, std::string url,
                                std::uint64_t limit, std::stop_token stop);

    const DownloadPolicy& policy() const { return policy_; }

  private:
    FileSystem& files_;
    DownloadPolicy policy_;
};

} // namespace tessarune
