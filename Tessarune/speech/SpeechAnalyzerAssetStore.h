#pragma once

#include "Tessarune/speech/SpeechAnalyzerAssets.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <map>
#include <string>
#include <utility>

namespace tessarune {

/// The availability of a locale's speech model.
struct SpeechAnalyzerAssetStatus {
    enum class Kind { failed, unsupported, checking, installed, needsDownload, downloading };

    Kind kind = Kind::needsDownload;
    std::string message; ///< the reason, for `failed`

    static SpeechAnalyzerAssetStatus failed(std::string message) {
        return {Kind::failed, std::move(message)};
    }

    bool operator==(const SpeechAnalyzerAssetStatus&) const = default;
};

/// The states of the speech models for display, and their installation on demand. Main queue only;
/// one object for the program.
class SpeechAnalyzerAssetStore {
  public:
    SpeechAnalyzerAssetStore(Host& host, AssetInventory& assets, TessaruneFileLogger& logger)
        : host_(host), assets_(assets), logger_(logger) {}
    ~SpeechAnalyzerAssetStore();
    SpeechAnalyzerAssetStore(const SpeechAnalyzerAssetStore&) = delete;
    SpeechAnalyzerAssetStore& operator=(const SpeechAnalyzerAssetStore&) = delete;

    /// By locale identifier; a locale that was never requested has no entry.
    Published<std::map<std::string, SpeechAnalyzerAssetStatus>> statuses;

    /// Checks the locale's model and installs it if necessary; replaces a running attempt.
    void prepare(const std::string& localeIdentifier);

    /// Like `prepare`, but does nothing if the model is installed, or an attempt is running.
    void preheat(const std::string& localeIdentifier);

  private:
    static Task<void> install(SpeechAnalyzerAssetStore& store, std::string localeIdentifier,
                              std::stop_token stop);
    void setStatus(const std::string& localeIdentifier, SpeechAnalyzerAssetStatus status);

    Host& host_;
    AssetInventory& assets_;
    TessaruneFileLogger& logger_;
    std::map<std::string, TaskHandle> tasks_;
};

} // namespace tessarune
