#pragma once

#include <filesystem>

namespace tessarune::VocabularyFile {

/// The engine loads a vocabulary that is cut short, or no vocabulary at all, and then translates to
/// nonsense. Throws std::runtime_error with the file's name unless the file has the structure of a
/// whole one: pieces, and behind them how text is normalised. Takes some milliseconds.
void requireWhole(const std::filesystem::path& file);

} // namespace tessarune::VocabularyFile
