#pragma once

#include "TessaruneCore/recognition/RecognitionOption.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The fixed list of recognition languages.
namespace tessarune::ModelCatalog {

inline constexpr std::string_view defaultRecognitionOptionID = "apple-analyzer-en";
inline constexpr std::string_view groupEnglish = "English";

const std::vector<RecognitionOption>& recognitionOptions();
/// The options that a menu offers: all of them.
const std::vector<RecognitionOption>& visibleRecognitionOptions();

std::optional<RecognitionOption> recognitionOption(std::string_view id);
/// `id` if it is listed, else the default. Settings may hold an id from another version of the
/// program.
std::string normalizedRecognitionOptionID(std::string_view id);

} // namespace tessarune::ModelCatalog
