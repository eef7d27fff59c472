#pragma once

#include "tests/simulation/TranslatedLiveSession.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tessarune::simulation {

/// One session whose translator does everything that it must not: it is slow, fails in every way,
/// loses its files, hangs, answers after the settings were changed; and beside it the same session
/// without translation. All decided by a seed.
///
/// Checked: no row shows a translation into another language than the chosen one, no row gets a
/// second translation, each ends translated or the user is told why not; and captions, recording
/// and stop are those of the session without translation.
class TranslationSimulation {
  public:
    explicit TranslationSimulation(std::uint64_t seed);

    /// What was violated; empty if nothing was.
    std::string run();
    /// What happened, one line each with its time.
    const std::vector<std::string>& trace() const { return trace_; }

  private:
    struct Event {
        double pause;
        std::size_t kind; ///< below `firstTrouble`: speech
        std::uint64_t choice;
    };
    static constexpr std::size_t firstTrouble = 6;
    class Session;

    std::vector<Event> events_;
    std::mt19937_64 random_; ///< of what the service answers
    std::uint64_t seed_;
    std::vector<std::string> trace_;
    std::string violation_;
};

} // namespace tessarune::simulation
