#pragma once

#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"
#include "tests/simulation/ScriptedLooks.h"
#include "tests/simulation/SimulatedSession.h"

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace tessarune::simulation {

/// Sessions of random events on one simulated computer, all determined by a seed. The simulation
/// checks after every single step of the host that nothing forbidden has happened; the first
/// violation ends the run.
///
/// Every spoken word is unique, so that a lost or repeated word is found at once, however badly the
/// recogniser understands it (`ScriptedLooks`).
class SessionSimulation {
  public:
    explicit SessionSimulation(std::uint64_t seed);

    /// Returns the violation; empty if there is none.
    std::string run();
    /// The events, one line each with its time.
    const std::vector<std::string>& trace() const { return trace_; }

  private:
    using Phase = LiveSessionPhase;

    // What happens
    void act();
    void actOnSession(const std::string& action);
    void disturb();
    void disturbDisk();
    void changeSetting();
    void speak();
    void landTranslation();
    void askToTerminate();
    void advance(double seconds);
    void endWell();
    void endKilled();

    // What must hold
    void watch();
    void checkPhase(Phase phase);
    void checkCommitted(const CaptionCore::Rows& rows);
    void checkFinals();
    void checkLifecycle(const SessionDiagnostics::LifecycleEntry& entry);
    void checkSaved();
    void checkStep();
    void checkRest();
    void checkFiles();
    void require(bool holds, const std::string& what);

    void note(const std::string& what);
    std::uint64_t upTo(std::uint64_t limit) { return random_() % (limit + 1); }
    bool chance(int percent) { return upTo(99) < static_cast<std::uint64_t>(percent); }
    double seconds(double limit) { return limit * static_cast<double>(upTo(1000)) / 1000; }
    template <typename T>
    const T& oneOf(const std::vector<T>& choices) {
        return choices[upTo(choices.size() - 1)];
    }
    std::string newWords();
    std::string committedText() const;

    std::mt19937_64 random_;
    std::vector<std::string> trace_;
    std::string violation_;

    std::uint64_t lastWord_ = 0;
    std::optional<ScriptedLooks> looks_; ///< of the speaker's recogniser
    const ScriptedAnalyzer* speaker_ = nullptr;

    Phase lastPhase_ = Phase::idle;
    std::string said_; ///< in this session, to earlier recognisers
    std::size_t committedRows_ = 0;
    std::set<std::string> committedWords_;
    std::set<std::string> finalWords_; ///< from finals that the session accepted
    std::set<std::string> openSpans_;
    std::map<UUID, std::string> savedTexts_;
    int awaitedReplies_ = 0;
    bool diskWasFaulty_ = false;

    SimulatedSession session_; // its destructor calls notes and checks, which use what is above
    std::unique_ptr<TessaruneListeningLifecycleHandler> handler_;
};

} // namespace tessarune::simulation
