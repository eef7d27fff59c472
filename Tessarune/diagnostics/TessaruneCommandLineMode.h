#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// The headless side of the program: it looks at the command line before anything graphical exists.
namespace tessarune::TessaruneCommandLineMode {

/// Does what the arguments ask for (the program's name comes first) and returns the exit status of
/// the process; nothing if the application is to start. Any argument that begins with "--" keeps
/// the application from starting.
std::optional<int> runIfRequested(const std::vector<std::string>& arguments, std::ostream& out,
                                  FileSystem& files);

} // namespace tessarune::TessaruneCommandLineMode
