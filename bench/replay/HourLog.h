#pragma once

#include "TessaruneCore/recognition/ASREventRecord.h"

#include <cstddef>
#include <vector>

/// Event logs that are as long and as busy as one likes, and the same on every computer.
///
/// An utterance takes 6 seconds: 60 partials that grow word by word, some with a wrong word at or
/// near the end that the next one puts right, and a final with word times. It has one to a few
/// sentences with commas, and at most 300 characters.
namespace tessarune::HourLog {

enum class Language { english, chinese };

inline constexpr double utteranceSeconds = 6;
inline constexpr std::size_t partialsPerUtterance = 60;
inline constexpr std::size_t longestText = 300; ///< characters
/// An hour: 36,000 partials and 600 finals.
inline constexpr std::size_t utterancesPerHour = 600;
/// The last utterances say the same as the first ones, so that what they cost can be compared.
inline constexpr std::size_t repeatedUtterances = 50;

/// `utterances` of at least twice `repeatedUtterances`.
std::vector<ASREventRecord> make(Language language, std::size_t utterances = utterancesPerHour);

} // namespace tessarune::HourLog
