#pragma once

#include "TessaruneCore/UUID.h"

#include <string>

namespace tessarune {

/// What is needed to transcribe a saved recording once more, frozen when its session stopped.
struct HistoryRefinementRequest {
    UUID recordingID;
    std::string audioPath;
    std::string recognitionOptionID;
    std::string localeIdentifier;
    std::string translationBackend;
    std::string translationTargetLanguage;

    bool operator==(const HistoryRefinementRequest&) const = default;
};

} // namespace tessarune
