#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tessarune::simulation {

/// PROGRAM [--seeds N] [--seed S]: runs N seeds from S, or from 1; without N it runs one and prints
/// its trace. Stops at the first violation, prints its trace and returns exit status 1.
///
/// A `Simulation` is made from a seed. `run` returns the violation, or an empty text. `trace`
/// returns what happened. `name` is the name of the simulation on the command line.
template <typename Simulation>
int runSeeds(int argc, char** argv, const char* name) {
    std::uint64_t seeds = 0;
    std::uint64_t first = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--seeds") == 0)
            seeds = std::strtoull(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--seed") == 0)
            first = std::strtoull(argv[i + 1], nullptr, 10);
    }
    const bool isSingle = seeds == 0;
    for (std::uint64_t seed = first; seed < first + (isSingle ? 1 : seeds); ++seed) {
        Simulation simulation(seed);
        const std::string violation = simulation.run();
        if (isSingle || !violation.empty()) {
            for (const std::string& line : simulation.trace())
                std::printf("%s\n", line.c_str());
        }
        const auto number = static_cast<unsigned long long>(seed);
        if (!violation.empty()) {
            std::printf("seed %llu: %s\nagain with: scripts/simulate %s --seed %llu\n", number,
                        violation.c_str(), name, number);
            return 1;
        }
    }
    std::printf("%llu seeds, nothing violated\n",
                static_cast<unsigned long long>(isSingle ? 1 : seeds));
    return 0;
}

} // namespace tessarune::simulation
