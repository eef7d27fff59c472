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

/// A download that did not work. The text names the file and can be shown.
struct DownloadFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// A download that was asked to stop.
struct DownloadStopped : DownloadFailed {
    DownloadStopped() : DownloadFailed(localized("The download was stopped.")) {}
};

/// A try that failed and will be followed by another.
struct DownloadTrouble {
    std::string name;   ///< of the file
    std::string reason; ///< for the user
    double secondsToNextTry = 0;
};

struct DownloadPolicy {
    double connectSeconds = 15;
    double stallSeconds = 20;
    /// Tries in a row that bring nothing new before it is given up.
    int fruitlessTries = 6;
    /// The first pause between two tries; each further one is twice as long.
    double firstPauseSeconds = 1;
    double longestPauseSeconds = 60;
    /// Room on the disk that is left to the user.
    std::uint64_t spareBytes = 64'000'000;
    /// How often another process's download of the same model is looked after.
    double lockPauseSeconds = 0.5;
    /// An address that stands in for the servers of all files; empty for the servers themselves.
    /// See `mirrored`.
    std::string mirror = mirrorFromEnvironment();
    /// Gives such an address at each download, where `mirror` is empty; on the thread that
    /// downloads. May be empty.
    std::function<std::string()> chosenMirror{};
    /// Hears of each try that failed, on the thread that downloads. May be empty.
    std::function<void(const DownloadTrouble&)> onTrouble{};

    /// $TESSARUNE_MODEL_MIRROR, or empty.
    static std::string mirrorFromEnvironment();
    /// With what is chosen at each download, unless the environment names a mirror.
    static DownloadPolicy withMirror(std::function<std::string()> chosen);
    std::string currentMirror() const {
        return mirror.empty() && chosenMirror ? chosenMirror() : mirror;
    }
};

/// The address of a file on a mirror that keeps each server's files under the server's name, as
/// `wget --force-directories` writes them: https://host/path becomes <mirror>/host/path.
std::string mirrored(const std::string& url, const std::string& mirror);

/// Fetches single files, checked, with as many tries as it takes. Not thread-safe in itself; each
/// fetch is confined to the executor that it is given, and blocks it while bytes arrive.
class Downloader {
  public:
    Downloader(FileSystem& files, DownloadPolicy policy)
        : files_(files), policy_(std::move(policy)) {}

    /// Bytes of this file that are here, from the executor's thread.
    using Progress = std::function<void(std::uint64_t received)>;

    /// Brings the file into the folder, under its name once it is whole and right, beside it
    /// (".part") before. What stands there from an earlier try is used: a right file is left alone,
    /// a part is continued. A wrong one is removed; then, if it had been put together from parts,
    /// it is fetched once more. Resumes on `executor`. Throws DownloadFailed, and
    /// std::system_error if the disk fails.
    Task<void> fetch(Executor executor, FileToFetch file, std::filesystem::path folder,
                     Progress progress, std::stop_token stop);

    /// A list of at most `limit` bytes that is needed at once and kept nowhere; what the name says
    /// stands in the failure's text. Tries and pauses as `fetch`, always from the beginning. The
    /// caller has to see for himself whether it is right. Resumes on `executor`.
    Task<std::string> fetchText(Executor executor, std::string name, std::string url,
                                std::uint64_t limit, std::stop_token stop);

    const DownloadPolicy& policy() const { return policy_; }
    FileSystem& files() const { return files_; }

  private:
    FileSystem& files_;
    DownloadPolicy policy_;
};

} // namespace tessarune
