#pragma once

/// The text log of the system.
namespace tessarune::PlatformLog {

/// Sends the lines of TessaruneLog to the system's journal under the name of the program, and
/// faults to standard error if there is no journal. Call once at the start of the program.
void open(const char* program);

} // namespace tessarune::PlatformLog
