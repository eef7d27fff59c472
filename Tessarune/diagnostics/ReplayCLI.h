#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <iosfwd>
#include <string>
#include <vector>

/// `--replay`: what the captions of a recorded event log would have been, once for each freeze
/// value. Everything is said on `out`, errors included; there is no other outcome.
namespace tessarune::ReplayCLI {

/// `arguments` are those of the process, the program's name first. Timelines are written to
/// `files`. Of an option that is given twice the first counts; unknown ones are ignored.
void run(const std::vector<std::string>& arguments, std::ostream& out, FileSystem& files);

} // namespace tessarune::ReplayCLI
