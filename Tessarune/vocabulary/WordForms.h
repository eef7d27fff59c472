#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Normalises text so that its words can be counted. Pure functions, any thread.
namespace tessarune::WordForms {

/// Returns `text` in lower case, with plain quotation marks and with English contractions expanded:
/// "I'll" as "i will", "don't" as "do not", a possessive as the bare noun.
std::string prepare(std::string_view text);

/// The letters of a token, with the hyphens and apostrophes between them; other characters become
/// blanks. `nullopt` if no letter remains, or only a single one other than "i" and "a".
std::optional<std::string> normalizeToken(std::string_view token);

} // namespace tessarune::WordForms
