#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <string>

namespace tessarune {

/// The recogniser that handles a language. There is one kind: the on-device analyzer.
struct RecognitionEngine {
    struct AppleAnalyzer {
        std::string localeIdentifier;
        bool operator==(const AppleAnalyzer&) const = default;
    };

    AppleAnalyzer value;

    static RecognitionEngine appleAnalyzer(std::string localeIdentifier) {
        return {{std::move(localeIdentifier)}};
    }

    EngineCapabilities capabilities() const {
        return {.punctuatesNatively = true,
                .selfSegments = true,
                .streamsWordByWord = false,
                .providesWordTimestamps = true,
                .isOnline = false,
                .preferredCaptureSampleRate = std::nullopt};
    }

    bool operator==(const RecognitionEngine&) const = default;
};

} // namespace tessarune
