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

/// The output of one run: captions on standard output in the chosen form, and messages to the user.
/// Only `finish` waits for a reader. Main queue; the host must outlive it.
class RunOutput {
  public:
    struct Handlers {
        std::function<void()> onRoom;       ///< a slow reader has caught up: print what is new
        std::function<void()> onReaderGone; ///< the reader has closed the output
    };
    RunOutput(Host& host, const TerminalOptions& options, Handlers handlers);
    RunOutput(const RunOutput&) = delete;

    /// Prints what is new, unless the reader is behind: a slow reader misses intermediate states.
    void update(const CaptionPicture& picture);
    void say(const std::string& text) const { captions_.status(text); }
    void progress(const std::string& text);
    /// Prints the program's name and a message on standard error, even with `--quiet`.
    void warn(const std::string& text) const;
    /// Redraws after another program used the terminal.
    void redraw() { captions_.redraw(); }

    /// Prints the last picture, if any, and the run's failure, if any. Resumes when all output is
    /// written or can no longer be written, and returns the exit status.
    Task<ExitStatus> finish(std::optional<CaptionPicture> last, ExitStatus status,
                            std::string problem);
    /// Ends the wait of `finish`; does nothing before `finish`.
    void giveUp() { givesUp_ = isFinishing_; }

  private:
    CaptionOutput make(const TerminalOptions& options);
    void handleChange();
    Task<void> written(const OutputQueue& queue);

    Host& host_;
    const Handlers handlers_;
    const std::shared_ptr<bool> alive_ =
        std::make_shared<bool>(true); ///< tells posted work whether this object exists
    OutputQueue out_;
    OutputQueue errors_;
    bool showsProgressOnErrors_ = false;
    CaptionOutput captions_;
    bool isFinishing_ = false;
    bool givesUp_ = false;
};

} // namespace tessarune
