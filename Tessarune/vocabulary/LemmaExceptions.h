#pragma once

#include <optional>
#include <string_view>

/// Lemmas that override the lexicon. Any thread.
namespace tessarune::LemmaExceptions {

/// The lemma of a form; `nullopt` if the lexicon decides.
std::optional<std::string_view> lemma(std::string_view form);

/// Whether `word` is a function word, for which a lexicon of content words has no meaning or a
/// wrong one.
bool isFunctionWord(std::string_view word);

} // namespace tessarune::LemmaExceptions
