#pragma once

#include <filesystem>
#include <vector>

/// Finds the files that come with the program, in its installation or in its build tree. Both are
/// found relative to the running program, so that either can be moved. Any thread.
namespace tessarune::ProgramPlaces {

/// Folders with the engines' shared libraries, best first; they need not exist.
std::vector<std::filesystem::path> engineFolders();

/// Folders laid out as a model store, best first; they need not exist.
std::vector<std::filesystem::path> modelFolders();

/// The sample speech that comes with the program. Throws std::runtime_error with a text for the
/// user if it is missing.
std::filesystem::path sampleSpeech();

} // namespace tessarune::ProgramPlaces
