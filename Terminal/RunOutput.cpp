#include "Terminal/RunOutput.h"

#include "Terminal/TerminalCursor.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"
#include "TessaruneCore/text/TextColumns.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace tessarune {

namespace {

constexpr double checkReaderSeconds = 0.01;

} // namespace

RunOutput::RunOutput(Host& host, const TerminalOptions& options, Handlers handlers)
    : host_(host),
      handlers_(std::move(handlers)),
      out_(STDOUT_FILENO,
           [this, &host, alive = std::weak_ptr(alive_)] {
               host.post([this, alive] {
                   if (!alive.expired())
                       handleChange();
               });
           }),
      errors_(STDERR_FILENO, [] {}),
      captions_(make(options)) {}

CaptionOutput RunOutput::make(const TerminalOptions& options) {
    if (options.json)
        return makeJSONOutput(
            out_.stream(), [this] { return host_.now(); }, options.quiet);
    showsProgressOnErrors_ = !isatty(STDOUT_FILENO) && isScreen(STDERR_FILENO) && !options.quiet;
    if (!isScreen(STDOUT_FILENO))
        return makePlainOutput(out_.stream(), errors_.stream(), host_, options.quiet);
    TerminalCursor::guard(STDOUT_FILENO);
    return makeScreenOutput(out_.stream(), sizeOf(stdout), options.quiet);
}

void RunOutput::update(const CaptionPicture& picture) {
    if (!out_.isBehind())
        captions_.update(picture);
}

/// Shows the progress on standard error if plain captions go to a file or a pipe, because the user
/// may watch standard error.
void RunOutput::progress(const std::string& text) {
    captions_.progress(text);
    if (!showsProgressOnErrors_)
        return;
    std::fprintf(errors_.stream(), "\033[K%s\r", Text::printableLine(text).c_str());
    std::fflush(errors_.stream());
}

void RunOutput::warn(const std::string& text) const {
    std::fprintf(errors_.stream(), "tessarune-terminal: %s\n", Text::printable(text).c_str());
}

void RunOutput::handleChange() {
    if (out_.failure() == EPIPE)
        handlers_.onReaderGone();
    else if (out_.failure() != 0)
        warn(localized("The captions can no longer be written to the output."));
    else if (!isFinishing_)
        handlers_.onRoom();
}

/// Resumes when everything is written, when writing has failed, or after `giveUp`.
Task<void> RunOutput::written(const OutputQueue& queue) {
    while (!queue.isWritten() && !givesUp_) {
        Task<bool> waiting = sleep(Executor::main(host_), checkReaderSeconds);
        co_await waiting;
    }
}

Task<ExitStatus> RunOutput::finish(std::optional<CaptionPicture> last, ExitStatus status,
                                   std::string problem) {
    isFinishing_ = true;
    if (last)
        captions_.finish(*last);
    Task<void> writing = written(out_);
    co_await writing;
    TerminalCursor::release();
    const int failure = out_.failure();
    if ((failure != 0 && failure != EPIPE) || !out_.isWritten()) {
        const std::string why =
            failure != 0 ? systemMessage(failure) : localized("it was not read to the end");
        problem +=
            (problem.empty() ? "" : "\n") + localized("the output could not be written: %@", {why});
        status = status == ExitStatus::ok ? ExitStatus::ioError : status;
    }
    if (!problem.empty())
        warn(problem);
    givesUp_ = false; // an earlier `giveUp` was about the captions, not about the messages
    Task<void> writingErrors = written(errors_);
    co_await writingErrors;
    co_return status;
}

} // namespace tessarune
