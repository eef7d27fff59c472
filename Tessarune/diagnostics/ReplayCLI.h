#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <iosfwd>
#include <string>
#include <vector>

/// `--replay`: replays a recorded event log once for each value of `--freeze`, the seconds after
/// which an unchanged sentence is committed, and prints the captions. All messages, including
/// errors, go to `out`; there is no exit status.
namespace tessarune::ReplayCLI {

/// `arguments` are those of the process, the program's name first. Timelines are written through
/// `files`. If an option is repeated, the first one counts; unknown options are ignored.
void run(const std::vector<std::string>& arguments, std::ostream& out, FileSystem& files);

} // namespace tessarune::ReplayCLI
