#pragma once

#include "Terminal/CaptionOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/OutputQueue.h"
#include "Terminal/TerminalOptions.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The output of one run: captions on standard output in the chosen form, messages to the user
/// beside them. Nothing here waits for a reader until the end. Main queue; the host outlives it.
class RunOutput {
  public:
    struct Handlers {
        std::function<void()> onRoom;       ///< a slow reader has caught up: print what is new
        std::function<void()> onReaderGone; ///< nobody reads any more
    };
    RunOutput(Host& host, const TerminalOptions& options, Handlers handlers);
    RunOutput(const RunOutput&) = delete;

    /// Prints settled text once that is possible; a slow reader misses intermediate states.
    void update(const CaptionPicture& picture);
    void say(const std::string& text) const { captions_.status(text); }
    void progress(const std::string& text);
    /// Messages that are shown even with `--quiet`.
    void warn(const std::string& text) const;
    /// Redraws after another program used the terminal.
    void beginAnew() { captions_.beginAnew(); }

    /// Prints the last picture, if any, and the run's failure, if any. Resumes when all output is
    /// read; returns the exit status.
    Task<ExitStatus> finish(std::optional<CaptionPicture> last, ExitStatus status,
                            std::string problem);
    /// Ends the wait of `finish`.
    void giveUp() { givesUp_ = isFinishing_; }

  private:
    CaptionOutput make(const TerminalOptions& options);
    void handleChange();
    Task<void> written(const OutputQueue& queue);

    Host& host_;
    const Handlers handlers_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // for what the queue posts
    OutputQueue out_;
    OutputQueue errors_;
    bool showsProgressBeside_ = false;
    CaptionOutput captions_;
    bool isFinishing_ = false;
    bool givesUp_ = false;
};

} // namespace tessarune
