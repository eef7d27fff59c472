#pragma once

#include <filesystem>

namespace tessarune::VocabularyFile {

/// Checks that a vocabulary is complete: the engine loads even a truncated or empty one, and then
/// produces nonsense. Throws std::runtime_error with the file's name unless the file consists of
/// complete fields, among them pieces and the rules for normalising text. Takes a few milliseconds.
void requireComplete(const std::filesystem::path& file);

} // namespace tessarune::VocabularyFile
