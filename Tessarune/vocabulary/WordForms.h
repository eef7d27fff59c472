#pragma once

#include <optional>
#include <string>
#include <string_view>

/// How text becomes the words that are counted. Pure functions, any thread.
namespace tessarune::WordForms {

/// In lower case, with plain quotation marks, and with the contractions of English written out:
/// "I'll" as "i will", "don't" as "do not", a possessive as the bare noun.
std::string prepare(std::string_view text);

/// The letters of a token, with the hyphens and apostrophes between them; other characters become
/// blanks. `nullopt` if no letter remains, or only one that is not a word by itself.
std::optional<std::string> normalizeToken(std::string_view token);

} // namespace tessarune::WordForms
