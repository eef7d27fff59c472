#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/UUID.h"

#include <optional>
#include <string>

namespace tessarune {

/// What is needed to transcribe a saved recording once more, frozen when its session stopped or it
/// was asked for.
struct HistoryRefinementRequest {
    UUID recordingID;
    std::string audioPath;
    std::string recognitionOptionID;
    std::string localeIdentifier;
    std::string translationBackend;
    std::string translationTargetLanguage;

    bool operator==(const HistoryRefinementRequest&) const = default;

    /// For a recording that no session has just stopped: as the settings say now. Nothing where
    /// they name no language to be recognised.
    static std::optional<HistoryRefinementRequest>
    current(const AppSettings& settings, const UUID& recordingID, std::string audioPath);
};

} // namespace tessarune
