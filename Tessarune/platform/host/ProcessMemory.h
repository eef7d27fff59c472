#pragma once

/// How the process deals with the memory that it no longer needs.
namespace tessarune::ProcessMemory {

/// From now on large blocks go back to the operating system as soon as they are freed. To be called
/// once, at the start of the program; any thread.
void returnLargeBlocks();

} // namespace tessarune::ProcessMemory
