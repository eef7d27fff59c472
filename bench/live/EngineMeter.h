#pragma once

#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"

#include <memory>

/// Measures the cost of the speech engine inside a program that uses it: the processor time in its
/// calls and on the threads that it starts.
namespace tessarune::EngineMeter {

/// The program's engine, with every call timed. Throws like `MoonshineLibrary::shared`.
std::shared_ptr<const MoonshineLibrary> library();

/// The processor time so far, in seconds. May be called on any thread.
double seconds();

/// The number of threads that the engine has started.
std::size_t ownThreads();

/// The number of passes of the engine so far.
std::size_t passes();

} // namespace tessarune::EngineMeter
