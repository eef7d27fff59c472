#pragma once

#include "Terminal/CaptionSound.h"
#include "Terminal/EventLogFile.h"
#include "Terminal/Program.h"
#include "Terminal/RecogniserDelay.h"
#include "Terminal/RunOutput.h"
#include "Terminal/RunTranslation.h"
#include "Terminal/SessionNews.h"
#include "Tessarune/app/ListeningSession.h"
#include "TessaruneCore/host/OneShot.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// One listening session in the terminal: its sound, its captions, its event log and its messages
/// to the user. Main queue; the program must outlive it.
class TerminalSession {
  public:
    TerminalSession(Program& program, const TerminalOptions& options, CaptionsCommand command);
    TerminalSession(const TerminalSession&) = delete;

    /// Opens the source and checks the session's requirements. Returns false if `interrupt` was
    /// called meanwhile. Throws RunFailure.
    Task<bool> open();
    /// Whether the sample speech is captioned instead of the user's sound.
    bool isDemo() const { return sound_.isDemo(); }
    /// Runs the session from the first sound until it is saved. Throws RunFailure.
    Task<void> run();
    /// Cancels `open`, or makes the session end and be saved. During `finish`, discards the output
    /// that nobody has read.
    void interrupt();
    /// Redraws after another program used the terminal.
    void redraw() { output_.redraw(); }
    /// The refinement that would improve the saved transcript, if any.
    const std::optional<HistoryRefinementRequest>& refinement() const { return refinement_; }
    /// Prints the last words and the run's failure, if any. Returns the exit status.
    Task<ExitStatus> finish(ExitStatus status, std::string problem);

  private:
    void checkEventLog();
    void makeSession();
    Task<void> startListening();
    void watchDelay();
    void update();
    void handlePhase(LiveSessionPhase phase);
    void endWith(std::exception_ptr failure);
    std::string silenceHint() const;

    void say(const std::string& text) const { output_.say(text); }
    LiveTranscriptStore& store() { return session_->store(); }

    Program& program_;
    const CaptionsCommand command_;
    RunOutput output_;
    RunTranslation translation_;
    CaptionSound sound_;
    std::optional<EventLogFile> eventLog_;
    std::unique_ptr<ListeningSession> session_;
    std::unique_ptr<SessionNews> news_;
    std::unique_ptr<RecogniserDelay> delay_;
    std::optional<HistoryRefinementRequest> refinement_;
    OneShot<std::exception_ptr> ended_; ///< null on success
    bool interrupted_ = false;
};

} // namespace tessarune
