#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <string_view>

/// Describes a row of captions for the logs and snapshots of a run. Pure functions.
namespace tessarune::CaptionUnitObservation {

/// `previews` for display logs, `full` for snapshots. Both contain a hash of each text.
enum class Texts { previews, full };

/// `index` is the row's position among all rows, even if only some of them are described.
nlohmann::json unit(std::size_t index, const CaptionSegment& segment, Texts texts);

/// "none" without a translation unit, "result" for the row that carries the translation of its
/// unit, "member" for the other rows.
std::string_view translationRole(const CaptionSegment& segment);

/// The first 180 characters, on one line.
std::string preview(std::string_view text);

} // namespace tessarune::CaptionUnitObservation
