#include "Tessarune/platform/process-figures/LinuxProcessFigures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace tessarune {
namespace {

namespace fs = std::filesystem;

TEST(LinuxProcessFiguresTests, FiguresThatCannotBeReadAreUnknown) {
    testing::TemporaryFolder root;
    // A folder can be opened but not read, like the temperature file of a Wi-Fi adapter that
    // is switched off.
    for (const char* file : {"sys/class/thermal/thermal_zone0/temp", "proc/self/task/7/stat",
                             "proc/self/status", "proc/cpuinfo"})
        fs::create_directories(root / file);
    LinuxProcessFigures figures(root.path());
    EXPECT_EQ(figures.thermalState(), "unknown");
    EXPECT_TRUE(figures.threads().empty());
    EXPECT_EQ(figures.memory().residentMB, 0);
    const auto osVersion = [&] { return std::get<std::string>(figures.host().begin()->second); };
    EXPECT_TRUE(osVersion().starts_with("Linux "));
    fs::create_directories(root / "etc");
    std::ofstream(root / "etc/os-release") << "ID=x\nPRETTY_NAME=\"X 12 (y)\"\n";
    EXPECT_TRUE(osVersion().starts_with("X 12 (y), Linux ")) << osVersion();
    const fs::path zone = root / "sys/class/thermal/thermal_zone1";
    fs::create_directories(zone);
    std::ofstream(zone / "temp") << "95000\n";
    std::ofstream(zone / "trip_point_0_type") << "critical\n";
    std::ofstream(zone / "trip_point_0_temp") << "90000\n";
    EXPECT_EQ(figures.thermalState(), "critical");

    LinuxProcessFigures own;
    EXPECT_GT(own.memory().residentMB, 1);
    EXPECT_TRUE(std::ranges::any_of(own.threads(), [](const auto& t) { return t.isMain; }));
}

} // namespace
} // namespace tessarune
