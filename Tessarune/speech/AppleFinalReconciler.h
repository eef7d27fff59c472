#pragma once

#include "Tessarune/speech/AppleFinalReconcileRecord.h"
#include "TessaruneCore/text/TextHash.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Decides between a final result of the recogniser and the last partial before it.
///
/// A final is usually better than the partials that it replaces. If the final collapses to a few
/// words or to junk, it is replaced by the last partial, which the user has been reading. If that
/// partial covers more sound than the final, the decision also sets a mark: the audio time up to
/// which the next finals are dropped, because the partial already contains their words. The caller
/// keeps the mark between calls.
///
/// Pure functions, safe from any thread. None can fail.
namespace tessarune::AppleFinalReconciler {

AppleFinalReconcileOutcome reconcile(const AppleFinalReconcileCandidate& final,
                                     const std::optional<AppleFinalReconcileCandidate>& lastPartial,
                                     std::optional<double> suppressedFinalsUntilAudioTime);

/// The text in lower case, reduced to letters, marks, digits and single blanks.
std::string normalized(std::string_view text);
/// The number of code points that are letters, marks or digits.
std::size_t usefulScalarCount(std::string_view text);
/// Whether the text has more than white space, but no letter, mark or digit.
bool isPunctuationOnly(std::string_view text);
/// The share of punctuation and symbols (no letters, marks or digits) among the code points that
/// are not white space; 0 for an empty or blank text.
double punctuationRatio(std::string_view text);
/// Whether the text has two adjacent code points that are neither white space nor letters, marks or
/// digits.
bool hasLongPunctuationRun(std::string_view text);
/// Whether the first three words of the normalized text are the same.
bool hasRepeatedOpeningToken(std::string_view text);
/// Edit distance in characters.
std::size_t levenshteinDistance(const std::vector<std::string_view>& a,
                                const std::vector<std::string_view>& b);
/// Compares the first 240 characters of the normalized texts: 1 if they are the same, 0 if they
/// have nothing in common.
double normalizedSimilarity(std::string_view a, std::string_view b);
/// The first `limit` characters, followed by the number of characters cut off, if any.
std::string truncated(std::string_view text, std::size_t limit);

using tessarune::fnv1a64Hex;

} // namespace tessarune::AppleFinalReconciler
