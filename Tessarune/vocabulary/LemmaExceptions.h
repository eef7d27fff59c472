#pragma once

#include <optional>
#include <string_view>

/// Lemmas that override the lexicon. Any thread.
namespace tessarune::LemmaExceptions {

/// The lemma of a form; `nullopt` if the lexicon decides.
std::optional<std::string_view> lemma(std::string_view form);

/// Whether it is an article, a pronoun, a preposition or another word of grammar, of which a
/// lexicon of content words gives no meaning, or a wrong one.
bool isFunctionWord(std::string_view word);

} // namespace tessarune::LemmaExceptions
