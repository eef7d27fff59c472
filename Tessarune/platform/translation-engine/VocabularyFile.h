#pragma once

#include <filesystem>

namespace tessarune::VocabularyFile {

/// Checks that a vocabulary is complete: the engine loads even a truncated or empty one, and then
/// produces nonsense. Throws std::runtime_error with the file's name if a field is truncated, or if
/// the pieces or the rules for normalising text are missing. Takes a few milliseconds.
void requireComplete(const std::filesystem::path& file);

} // namespace tessarune::VocabularyFile
