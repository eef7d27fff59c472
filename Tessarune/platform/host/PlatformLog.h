#pragma once

/// The system's text log.
namespace tessarune::PlatformLog {

/// Sends the lines of TessaruneLog to the system's journal under the name `program`, which must
/// stay valid. Without a journal, writes faults to standard error. Call once at the start of the
/// program.
void open(const char* program);

} // namespace tessarune::PlatformLog
