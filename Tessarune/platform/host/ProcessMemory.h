#pragma once

/// How the process returns unused memory.
namespace tessarune::ProcessMemory {

/// Makes large blocks return to the operating system when they are freed. Call once at the start of
/// the program; any thread.
void returnLargeBlocks();

} // namespace tessarune::ProcessMemory
