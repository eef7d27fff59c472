#pragma once

#include "Tessarune/diagnostics/ProcessFigures.h"

#include <filesystem>
#include <utility>

namespace tessarune {

/// The figures of /proc/self, /sys and the C library. A figure that Linux lacks is "unknown" or the
/// closest one.
class LinuxProcessFigures final : public ProcessFigures {
  public:
    /// `root` is the folder that "proc" and "sys" are in.
    explicit LinuxProcessFigures(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// The running program's file; empty if it cannot be found out.
    static std::filesystem::path executable();

    double cpuSeconds() override;
    Memory memory() override;
    std::vector<Thread> threads() override;
    std::string thermalState() override;
    std::int64_t activeProcessorCount() override;
    std::optional<bool> lowPowerMode() override;
    LogFields host() override;

  private:
    const std::filesystem::path root_;
};

} // namespace tessarune
