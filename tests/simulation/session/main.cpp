#include "tests/simulation/SeededRuns.h"
#include "tests/simulation/session/SessionSimulation.h"

int main(int argc, char** argv) {
    using namespace tessarune::simulation;
    return runSeeds<SessionSimulation>(argc, argv, "session");
}
