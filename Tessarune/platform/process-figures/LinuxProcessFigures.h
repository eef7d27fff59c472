#pragma once

#include "Tessarune/diagnostics/ProcessFigures.h"

#include <filesystem>
#include <utility>

namespace tessarune {

/// Reads the figures from /proc, /sys and the C library. A figure that Linux lacks is "unknown",
/// absent, or replaced by the closest figure.
class LinuxProcessFigures final : public ProcessFigures {
  public:
    /// `root` is the folder that contains "proc" and "sys".
    explicit LinuxProcessFigures(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// The running program's file; empty if it is unknown.
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
