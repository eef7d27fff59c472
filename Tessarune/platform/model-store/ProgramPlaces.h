#pragma once

#include <filesystem>
#include <vector>

/// Where the files that come with the program are: beside it if it is installed, else in its build
/// tree. Both are relative to the running program, so either can be moved. Any thread.
namespace tessarune::ProgramPlaces {

/// Folders with the engines' shared libraries, best first; they need not exist.
std::vector<std::filesystem::path> engineFolders();

/// Folders laid out as a model store, best first; they need not exist.
std::vector<std::filesystem::path> modelFolders();

/// The sample speech that comes with the program. Throws std::runtime_error with a text that says
/// how to get it.
std::filesystem::path sampleSpeech();

} // namespace tessarune::ProgramPlaces
