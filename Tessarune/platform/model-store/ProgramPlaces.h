#pragma once

#include <filesystem>
#include <vector>

/// Where the files that come with the program are: beside it where it is installed, in the build
/// tree where it was just built. Both are found from the place of the running program, so neither
/// needs to stay where it was made. Any thread.
namespace tessarune::ProgramPlaces {

/// Folders with the engines' shared libraries, best first; they need not exist.
std::vector<std::filesystem::path> engineFolders();

/// Folders that are laid out as a model store, best first; they need not exist.
std::vector<std::filesystem::path> modelFolders();

/// Speech that comes with the program. Throws std::runtime_error with a text that says how to get
/// it.
std::filesystem::path sampleSpeech();

} // namespace tessarune::ProgramPlaces
