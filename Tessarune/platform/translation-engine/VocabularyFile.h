#pragma once

#include <filesystem>

namespace tessarune::VocabularyFile {

/// Checks a vocabulary: the engine loads a truncated one, or none at all, and then translates to
/// nonsense. Throws std::runtime_error with the file's name unless the file has the structure of a
/// whole one: pieces, followed by the rules for normalising text. Takes a few milliseconds.
void requireWhole(const std::filesystem::path& file);

} // namespace tessarune::VocabularyFile
