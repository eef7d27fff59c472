#pragma once

/// The text log of the system.
namespace tessarune::PlatformLog {

/// From now on the lines of TessaruneLog go to the system's journal under the name of the program,
/// and faults to standard error where there is none. To be called once, at the program's start.
void open(const char* program);

} // namespace tessarune::PlatformLog
