#pragma once

#include <string>
#include <utility>

namespace tessarune {

/// Whether a locale's speech model can be used.
struct SpeechAnalyzerAssetStatus {
    enum class Kind { failed, unsupported, checking, installed, needsDownload, downloading };

    Kind kind = Kind::needsDownload;
    std::string message; ///< of `failed`: why

    static SpeechAnalyzerAssetStatus failed(std::string message) {
        return {Kind::failed, std::move(message)};
    }

    bool operator==(const SpeechAnalyzerAssetStatus&) const = default;
};

} // namespace tessarune
