#pragma once

#include "Tessarune/platform/speech-engine/MoonshineABI.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The speech engine's shared library. It is opened on first use and never closed (it keeps threads
/// and state of its own), so a program without it still starts and learns the reason here.
///
/// Any thread; calls for one transcriber must come from one thread at a time.
class MoonshineLibrary {
  public:
    /// The library that came with the program. Throws std::runtime_error with a text that names the
    /// searched places, or the fault of the library that was found; the next call tries again.
    static std::shared_ptr<const MoonshineLibrary> shared();

    /// The first library that stands in one of these folders. Throws as `shared`.
    static std::shared_ptr<const MoonshineLibrary>
    open(const std::vector<std::filesystem::path>& folders);

    /// With custom calls, for tests.
    explicit MoonshineLibrary(const moonshine::Calls& calls) : calls_(calls) {}

    const moonshine::Calls& calls() const { return calls_; }

    /// Returns `result`, or throws std::runtime_error with `doing` and the engine's message if it
    /// is a failure.
    std::int32_t check(std::int32_t result, std::string_view doing) const;

    /// The engine's list of the files of an English model, JSON. Throws std::runtime_error.
    std::string dependencies(moonshine::Architecture architecture, bool withWordTimes) const;

  private:
    moonshine::Calls calls_{};
};

} // namespace tessarune
