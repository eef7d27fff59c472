#include "Tessarune/platform/model-store/Downloader.h"

#include "Tessarune/platform/model-store/Checksums.h"
#include "Tessarune/platform/model-store/HTTPTransfer.h"
#include "Tessarune/platform/model-store/Unpacking.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace tessarune {

namespace {

/// The limit in bytes for a file of unknown size; no model is larger.
constexpr std::uint64_t largestUnknownFile = 2'000'000'000;
/// The limit of an unknown unpacked size, as a multiple of the packed size.
constexpr std::uint64_t largestUnpackingRatio = 20;

[[noreturn]] void fail(const std::string& name, const std::string& url, const std::string& reason) {
    throw DownloadFailed(localized("%@ could not be downloaded from %@: %@", {name, url, reason}));
}

/// Decides whether and when to retry.
class Tries {
  public:
    explicit Tries(const DownloadPolicy& policy) : policy_(policy) {}

    /// Throws DownloadStopped after a stop request, DownloadFailed when further attempts are
    /// pointless. `have`: bytes received so far.
    void afterFailure(const std::string& name, const std::string& url,
                      const TransferOutcome& outcome, std::uint64_t have) {
        if (outcome.kind == TransferOutcome::Kind::stopped)
            throw DownloadStopped();
        fruitless_ = have > maximumReceived_ ? 0 : fruitless_ + 1;
        maximumReceived_ = std::max(maximumReceived_, have);
        retryAfter_ = outcome.retryAfterSeconds;
        TessaruneLog::app.info(
            [&] { return "download of " + url + " interrupted: " + outcome.reason; });
        if (outcome.kind == TransferOutcome::Kind::refused || fruitless_ > policy_.fruitlessTries)
            fail(name, url, outcome.reason);
        if (policy_.onTrouble)
            policy_.onTrouble({name, outcome.reason, pause()});
    }

    double pause() const {
        const double doubled = policy_.firstPauseSeconds * std::exp2(std::max(fruitless_ - 1, 0));
        const double wanted = std::max(doubled, retryAfter_.value_or(0));
        return std::min(wanted, policy_.longestPauseSeconds);
    }

  private:
    const DownloadPolicy& policy_;
    int fruitless_ = 0;
    std::uint64_t maximumReceived_ = 0;
    std::optional<double> retryAfter_;
};

/// One file in progress; the state of `fetch` between two attempts.
class Fetch {
  public:
    Fetch(FileSystem& files, const DownloadPolicy& policy, FileToFetch file,
          std::filesystem::path folder, Downloader::Progress progress)
        : files_(files),
          policy_(policy),
          file_(std::move(file)),
          target_(folder / file_.name),
          part_(folder / (file_.name + ".part")),
          progress_(std::move(progress)),
          tries_(policy) {}

    /// Whether the file is stored already and its checksum matches. Removes a file whose checksum
    /// differs.
    bool hasValidTarget() {
        if (!files_.exists(target_))
            return false;
        const bool isValid = file_.sha256.empty()
                                 ? CRC32C::ofFile(target_) == file_.crc32c && !file_.isZstd
                                 : SHA256::ofFile(target_) == file_.sha256;
        if (!isValid)
            files_.remove(target_);
        else
            report(file_.bytes);
        return isValid;
    }

    enum class State { done, again };

    /// Makes one attempt. Throws when further ones are pointless.
    State attempt(const std::stop_token& stop) {
        const std::uint64_t have = partialSize();
        if (file_.bytes == 0 || have != file_.bytes) {
            const TransferOutcome outcome = transferFrom(have, stop);
            if (outcome.kind != TransferOutcome::Kind::complete)
                return afterFailure(outcome);
            if (file_.bytes != 0 && partialSize() != file_.bytes)
                return afterFailure({TransferOutcome::Kind::again,
                                     localized("the server ended the file too early"),
                                     {},
                                     false});
        } else {
            wasContinued_ = true;
        }
        return keepIfValid();
    }

    double pause() const { return tries_.pause(); }

  private:
    /// The size of the partial file, 0 if there is none. Removes a file that is too large.
    std::uint64_t partialSize() {
        if (!files_.exists(part_))
            return 0;
        const std::uint64_t size = files_.size(part_);
        if (size <= limit())
            return size;
        files_.remove(part_);
        return 0;
    }

    std::uint64_t limit() const { return file_.bytes != 0 ? file_.bytes : largestUnknownFile; }

    TransferOutcome transferFrom(std::uint64_t offset, const std::stop_token& stop) {
        TransferRequest request{file_.url, offset, limit(), policy_.connectSeconds,
                                policy_.stallSeconds};
        std::unique_ptr<AppendFile> out;
        std::uint64_t received = offset;
        const TransferSink sink{[&](std::uint64_t from) {
                                    out = from == 0 ? files_.create(part_)
                                                    : files_.openForAppending(part_);
                                    received = from;
                                    wasContinued_ = from != 0;
                                },
                                [&](std::string_view bytes) {
                                    out->append(bytes);
                                    received += bytes.size();
                                    report(received);
                                }};
        TransferOutcome outcome = transfer(request, sink, stop);
        if (out) {
            out->synchronize();
            out->close();
        } else if (outcome.kind == TransferOutcome::Kind::complete && offset == 0) {
            files_.create(part_)->close(); // `begin` is not called for an empty file
        }
        return outcome;
    }

    State afterFailure(const TransferOutcome& outcome) {
        if (outcome.rangeWasWrong)
            files_.remove(part_);
        tries_.afterFailure(file_.name, file_.url, outcome, partialSize());
        return State::again;
    }

    State keepIfValid() {
        const std::string wrong = unpackAndVerify();
        if (wrong.empty()) {
            if (!file_.isZstd)
                files_.rename(part_, target_);
            files_.remove(part_);
            return State::done;
        }
        files_.remove(part_);
        // The removed file may have consisted of parts of different editions: fetch it once more.
        if (wasContinued_ && !std::exchange(hasRestarted_, true))
            return State::again;
        fail(file_.name, file_.url, wrong);
    }

    /// Checks the checksums; unpacks a packed file to its target. Returns the problem, empty if
    /// there is none.
    std::string unpackAndVerify() {
        if (file_.crc32c && CRC32C::ofFile(part_) != file_.crc32c)
            return localized("its checksum (CRC-32C) is wrong; it was removed");
        std::string sum;
        if (file_.isZstd) {
            const std::filesystem::path unpacked = target_.string() + ".unpacked";
            const std::uint64_t maximumBytes = file_.unpackedBytes != 0
                                                   ? file_.unpackedBytes
                                                   : files_.size(part_) * largestUnpackingRatio;
            const std::unique_ptr<AppendFile> out = files_.create(unpacked);
            const UnpackingOutcome outcome = unpackZstd(part_, *out, maximumBytes);
            out->synchronize();
            out->close();
            if (outcome.failure.empty() && outcome.sha256 == file_.sha256) {
                files_.rename(unpacked, target_);
                return {};
            }
            files_.remove(unpacked);
            if (!outcome.failure.empty())
                return localized("%@; it was removed", {outcome.failure});
            sum = outcome.sha256;
        } else if (!file_.sha256.empty()) {
            sum = SHA256::ofFile(part_);
        }
        return sum == file_.sha256 ? std::string()
                                   : localized("its checksum (SHA-256) is wrong; it was removed");
    }

    void report(std::uint64_t received) const {
        if (progress_)
            progress_(received);
    }

    FileSystem& files_;
    const DownloadPolicy& policy_;
    FileToFetch file_;
    std::filesystem::path target_;
    std::filesystem::path part_;
    Downloader::Progress progress_;
    Tries tries_;
    bool wasContinued_ = false;
    bool hasRestarted_ = false;
};

} // namespace

std::string DownloadPolicy::mirrorFromEnvironment() {
    const char* value = std::getenv("TESSARUNE_MODEL_MIRROR");
    return value != nullptr ? value : "";
}

DownloadPolicy DownloadPolicy::withMirror(std::function<std::string()> chosen) {
    DownloadPolicy policy;
    policy.chosenMirror = std::move(chosen);
    return policy;
}

std::string mirrored(const std::string& url, const std::string& mirror) {
    const std::size_t host = url.find("://");
    if (mirror.empty() || host == std::string::npos)
        return url;
    return mirror + (mirror.ends_with('/') ? "" : "/") + url.substr(host + 3);
}

Task<void> Downloader::fetch(Executor executor, FileToFetch file, std::filesystem::path folder,
                             Progress progress, std::stop_token stop) {
    if (!file.crc32c && file.sha256.empty())
        throw DownloadFailed(localized(
            "%@ is not downloaded, because it has no checksum to verify it with.", {file.name}));
    if (file.isZstd && file.sha256.empty())
        throw DownloadFailed(localized("%@ is not downloaded, because it has no checksum to verify "
                                       "its unpacked contents with.",
                                       {file.name}));
    file.url = mirrored(file.url, policy_.currentMirror());
    Fetch fetching(files_, policy_, std::move(file), std::move(folder), std::move(progress));
    co_await switchTo(executor);
    if (fetching.hasValidTarget())
        co_return;
    while (fetching.attempt(stop) == Fetch::State::again) {
        if (!co_await sleep(executor, fetching.pause(), stop))
            throw DownloadStopped();
    }
}

Task<std::string> Downloader::fetchText(Executor executor, std::string name, std::string url,
                                        std::uint64_t limit, std::stop_token stop) {
    const std::string address = mirrored(url, policy_.currentMirror());
    Tries tries(policy_);
    co_await switchTo(executor);
    while (true) {
        std::string text;
        const TransferSink sink{[&](std::uint64_t) { text.clear(); },
                                [&](std::string_view bytes) { text += bytes; }};
        const TransferRequest request{address, 0, limit, policy_.connectSeconds,
                                      policy_.stallSeconds};
        const TransferOutcome outcome = transfer(request, sink, stop);
        if (outcome.kind == TransferOutcome::Kind::complete)
            co_return text;
        tries.afterFailure(name, address, outcome, 0);
        if (!co_await sleep(executor, tries.pause(), stop))
            throw DownloadStopped();
    }
}

} // namespace tessarune
