#include "tests/simulation/session/SessionSimulation.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using tessarune::simulation::SessionSimulation;

/// True if nothing was violated.
bool runSeed(std::uint64_t seed, bool showsTrace) {
    SessionSimulation simulation(seed);
    const std::string violation = simulation.run();
    if (showsTrace || !violation.empty()) {
        for (const std::string& line : simulation.trace())
            std::printf("%s\n", line.c_str());
    }
    if (!violation.empty())
        std::printf("seed %llu: %s\nagain with: scripts/simulate --seed %llu\n",
                    static_cast<unsigned long long>(seed), violation.c_str(),
                    static_cast<unsigned long long>(seed));
    return violation.empty();
}

} // namespace

/// session-simulation [--seeds N] [--seed S]: runs the seeds S, S + 1, … (1 without S); one seed
/// alone shows what happened. Ends with the first that fails.
int main(int argc, char** argv) {
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
        if (!runSeed(seed, isSingle))
            return 1;
    }
    std::printf("%llu seeds, nothing violated\n",
                static_cast<unsigned long long>(isSingle ? 1 : seeds));
    return 0;
}
