#pragma once

#include "Tessarune/platform/speech-engine/MoonshineABI.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The speech engine's shared library. It is opened on first use, so that a program without it
/// still starts; `shared` then throws the reason. It is never closed, because it keeps threads and
/// state.
///
/// Any thread; calls for one transcriber must come from one thread at a time.
class MoonshineLibrary {
  public:
    /// The library that came with the program. Throws std::runtime_error whose text names the
    /// searched files, or the fault of the library that was found; the next call tries again.
    static std::shared_ptr<const MoonshineLibrary> shared();

    /// The library in the first of these folders that has it. Throws like `shared`.
    static std::shared_ptr<const MoonshineLibrary>
    open(const std::vector<std::filesystem::path>& folders);

    /// Uses other calls instead of a library, for tests.
    explicit MoonshineLibrary(const moonshine::Calls& calls) : calls_(calls) {}

    const moonshine::Calls& calls() const { return calls_; }

    /// Returns `result`. If it is a failure, throws std::runtime_error with `problem`, which is a
    /// localisation key or a text for the user, and with the engine's message.
    std::int32_t check(std::int32_t result, std::string_view problem) const;

    /// The engine's list of the files of an English model, as JSON; empty if the engine returns no
    /// list. Throws std::runtime_error.
    std::string dependencies(moonshine::Architecture architecture, bool withWordTimes) const;

  private:
    moonshine::Calls calls_{};
};

} // namespace tessarune
