#pragma once

#include "tests/simulation/TranslatedLiveSession.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tessarune::simulation {

/// Runs one session with a translator that misbehaves: it is slow, fails in every way, loses its
/// files, hangs, and answers after the settings have changed. Then runs the same session without
/// translation. A seed determines everything.
///
/// Checked: no row shows a translation into another language than the chosen one, no row gets a
/// second translation, and each row ends translated or the user learns why not. Captions and
/// recording equal those of the session without translation. The stop takes longer by at most the
/// time for which it may wait for translations.
class TranslationSimulation {
  public:
    explicit TranslationSimulation(std::uint64_t seed);

    /// Returns the violation; empty if there is none.
    std::string run();
    /// The events, one line each with its time.
    const std::vector<std::string>& trace() const { return trace_; }

  private:
    struct Event {
        double pause;
        std::size_t kind; ///< speech below `firstTrouble`, else a disturbance
        std::uint64_t choice;
    };
    static constexpr std::size_t firstTrouble = 6;
    class Session;

    std::vector<Event> events_;
    std::mt19937_64 random_; ///< for the service's answers
    std::uint64_t seed_;
    std::vector<std::string> trace_;
    std::string violation_;
};

} // namespace tessarune::simulation
