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
        std::optional<int> over;
        if (isOpen && !session.isDemo()) { // no questions before sample speech
            signals.reset();               // question and download watch signals themselves
            Task<std::optional<int>> asking = offerTranslation(program, options, command);
            over = co_await asking;
            watchSignals();
        }
        if (over) {
            status = static_cast<ExitStatus>(*over);
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
    signals.reset(); // a cancelled refinement is neither a failure nor a second Ctrl-C
    if (status == ExitStatus::ok && session.refinement() && isWatched(options)) {
        Task<void> refining = refineAfterSession(program, options, *session.refinement());
        co_await refining;
    }
    co_return static_cast<int>(status);
}

} // namespace tessarune
