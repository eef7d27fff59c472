#pragma once

#include "TessaruneCore/recognition/ASREventRecord.h"

#include <cstddef>
#include <vector>

/// Generates event logs of any length, the same on every computer.
///
/// An utterance takes 6 seconds: 60 partials that grow word by word, and a final with word times.
/// Some partials have a wrong word at or near the end, which a later partial corrects. An utterance
/// has one or a few sentences with commas, and at most 300 characters.
namespace tessarune::HourLog {

enum class Language { english, chinese };

inline constexpr double utteranceSeconds = 6;
inline constexpr std::size_t partialsPerUtterance = 60;
inline constexpr std::size_t longestText = 300; ///< characters
/// An hour: 36,000 partials and 600 finals.
inline constexpr std::size_t utterancesPerHour = 600;
/// The last utterances repeat the first ones, so that their costs can be compared.
inline constexpr std::size_t repeatedUtterances = 50;

/// Returns a log. `utterances` must be at least twice `repeatedUtterances`.
std::vector<ASREventRecord> make(Language language, std::size_t utterances = utterancesPerHour);

} // namespace tessarune::HourLog
