#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/RunFailure.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TerminalSession.h"
#include "Terminal/TranslationOffer.h"
#include "Terminal/history/RefineCommand.h"

#include <unistd.h>

namespace tessarune {

namespace {

/// Whether a user sees the progress of a refinement and can cancel it.
bool isWatched(const TerminalOptions& options) {
    return isScreen(STDERR_FILENO) && isatty(STDIN_FILENO) && !options.quiet && !options.json;
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    TerminalSession session(program, options, command);
    std::optional<SignalWatch> signals;
    const auto watchSignals = [&] {
        signals.emplace(
            program.host, [&session] { session.interrupt(); }, [&session] { session.redraw(); });
    };
    watchSignals();
    ExitStatus status = ExitStatus::ok;
    std::string problem;
    try {
        Task<bool> opening = session.open();
        const bool isOpen = co_await opening;
        std::optional<ExitStatus> refusal;
        if (isOpen && !session.isDemo()) { // no questions before sample speech
            // The offer creates a SignalWatch of its own, and only one may exist at a time.
            signals.reset();
            Task<std::optional<ExitStatus>> asking = offerTranslation(program, options, command);
            refusal = co_await asking;
            watchSignals();
        }
        if (refusal) {
            status = *refusal;
        } else if (isOpen) {
            Task<void> running = session.run();
            co_await running;
        }
    } catch (const RunFailure& failure) {
        problem = failure.what();
        status = failure.status;
    }
    Task<ExitStatus> finishing = session.finish(status, std::move(problem));
    status = co_await finishing;
    // The refinement has its own SignalWatch: Ctrl-C cancels the refinement, even if an earlier
    // Ctrl-C has ended the session, and does not change the exit status.
    signals.reset();
    if (status == ExitStatus::ok && session.refinement() && isWatched(options)) {
        Task<void> refining = refineAfterSession(program, options, *session.refinement());
        co_await refining;
    }
    co_return static_cast<int>(status);
}

} // namespace tessarune
