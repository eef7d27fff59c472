#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// The headless mode of the program: evaluates the command line before anything graphical exists.
namespace tessarune::TessaruneCommandLineMode {

/// Executes the arguments (the program's name comes first) and returns the exit status of the
/// process, or `nullopt` if the application should start. Any argument that begins with "--" keeps
/// the application from starting.
std::optional<int> runIfRequested(const std::vector<std::string>& arguments, std::ostream& out,
                                  FileSystem& files);

} // namespace tessarune::TessaruneCommandLineMode
