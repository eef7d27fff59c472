#pragma once

#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"

#include <memory>

/// What the speech engine itself costs, inside of a program that uses it: processor time in its
/// calls, and on the threads that it starts.
namespace tessarune::EngineMeter {

/// The program's own engine with every call timed. Throws as `MoonshineLibrary::shared`.
std::shared_ptr<const MoonshineLibrary> library();

/// Seconds so far. Any thread.
double seconds();

/// How many threads the engine has started.
std::size_t ownThreads();

/// How often the engine has looked at the sound.
std::size_t passes();

} // namespace tessarune::EngineMeter
