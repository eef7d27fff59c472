#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/UUID.h"

#include <optional>
#include <string>

namespace tessarune {

/// Everything that is needed to transcribe a saved recording, as it was when the request was made,
/// for example when the session stopped.
struct HistoryRefinementRequest {
    UUID recordingID;
    std::string audioPath;
    std::string recognitionOptionID;
    std::string localeIdentifier;
    std::string translationBackend;
    std::string translationTargetLanguage;

    bool operator==(const HistoryRefinementRequest&) const = default;

    /// Makes a request from the current settings. `nullopt` if they name no language to recognise.
    static std::optional<HistoryRefinementRequest>
    current(const AppSettings& settings, const UUID& recordingID, std::string audioPath);
};

} // namespace tessarune
