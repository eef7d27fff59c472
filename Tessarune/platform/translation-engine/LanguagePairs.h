#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A pair of languages as the catalogue of models names them, with the conversion that its output
/// needs.
struct TranslationPair {
    std::string source;
    std::string target;
    /// The model writes simplified characters, and traditional ones are wanted.
    bool isForTraditional = false;

    /// The name of the pair's model in the model store.
    std::string modelName() const { return source + "-" + target; }

    bool operator==(const TranslationPair&) const = default;
};

/// How platform identifiers ("en-US", "zh-Hant", "pt-BR") become pairs of the catalogue. Pure.
namespace LanguagePairs {

/// The pairs that fit, best first; none for an unknown identifier. Pairs that need a conversion
/// come last.
std::vector<TranslationPair> candidates(std::string_view source, std::string_view target);

} // namespace LanguagePairs

} // namespace tessarune
