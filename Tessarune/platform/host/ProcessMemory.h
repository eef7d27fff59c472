#pragma once

/// How the process returns unused memory.
namespace tessarune::ProcessMemory {

/// From now on large blocks return to the operating system when they are freed. Call once at the
/// start of the program; any thread.
void returnLargeBlocks();

} // namespace tessarune::ProcessMemory
