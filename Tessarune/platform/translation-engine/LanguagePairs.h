#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A pair of languages as the catalogue of models names them, with what has to be done behind it.
struct TranslationPair {
    std::string source;
    std::string target;
    /// The model gives simplified characters, traditional ones are wanted.
    bool isForTraditional = false;

    /// The name of its model in the model store.
    std::string modelName() const { return source + "-" + target; }

    bool operator==(const TranslationPair&) const = default;
};

/// How platform identifiers ("en-US", "zh-Hant", "pt-BR") become pairs of the catalogue. Pure.
namespace LanguagePairs {

/// The pairs that can serve, best first; none for an identifier that names no language. Those that
/// need a conversion stand behind those that need none.
std::vector<TranslationPair> candidates(std::string_view source, std::string_view target);

} // namespace LanguagePairs

} // namespace tessarune
