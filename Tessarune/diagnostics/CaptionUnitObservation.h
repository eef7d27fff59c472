#pragma once

#include "TessaruneCore/captions/CaptionSegment.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How logs and snapshots of a run describe a row of captions. Pure functions.
namespace tessarune::CaptionUnitObservation {

/// Display logs follow a text by its hash and a preview; a snapshot has all of it.
enum class Texts { previews, full };

/// `index` is the row's place in the full list.
nlohmann::json unit(std::size_t index, const CaptionSegment& segment, Texts texts);

/// "none" without a translation unit, "result" for the row that carries its translation, "member".
std::string_view translationRole(const CaptionSegment& segment);

/// The first 180 characters on one line.
std::string preview(std::string_view text);

} // namespace tessarune::CaptionUnitObservation
