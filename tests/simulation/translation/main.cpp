#include "tests/simulation/SeededRuns.h"
#include "tests/simulation/translation/TranslationSimulation.h"

int main(int argc, char** argv) {
    using namespace tessarune::simulation;
    return runSeeds<TranslationSimulation>(argc, argv, "translation");
}
