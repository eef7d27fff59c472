#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A pair of languages as the catalogue of models names them, and whether the model's output must
/// be converted.
struct TranslationPair {
    std::string source;
    std::string target;
    /// The model produces simplified characters, which must be converted to traditional ones.
    bool convertsToTraditional = false;

    /// The name of the pair's model in the model store.
    std::string modelName() const { return source + "-" + target; }

    bool operator==(const TranslationPair&) const = default;
};

/// Maps platform identifiers ("en-US", "zh-Hant", "pt-BR") to pairs of the catalogue. Pure
/// functions.
namespace LanguagePairs {

/// Returns the possible pairs, best first; none for an invalid identifier. Pairs that convert to
/// traditional characters come last.
std::vector<TranslationPair> candidates(std::string_view source, std::string_view target);

} // namespace LanguagePairs

} // namespace tessarune
