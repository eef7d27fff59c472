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

/// Where one run prints: captions on standard output in the form that fits it, words to the user
/// beside them. Nothing here waits for a reader until the end. Main queue; the host outlives it.
class RunOutput {
  public:
    struct Handlers {
        std::function<void()> onRoom;       ///< a slow reader has caught up: print what is new
        std::function<void()> onReaderGone; ///< nobody reads any more
    };
    RunOutput(Host& host, const TerminalOptions& options, Handlers handlers);
    RunOutput(const RunOutput&) = delete;

    /// What is settled is printed once it can be; states that pass are left out for a slow reader.
    void update(const CaptionPicture& picture);
    void say(const std::string& text) const { captions_.status(text); }
    void progress(const std::string& text);
    /// What the user must know, also with `--quiet`.
    void warn(const std::string& text) const;
    /// Redraws after another program used the terminal.
    void beginAnew() { captions_.beginAnew(); }

    /// The last picture, if there is one, and why the run failed, if it did. Goes on when all has
    /// been read; gives the status to end with.
    Task<ExitStatus> finish(std::optional<CaptionPicture> last, ExitStatus status,
                            std::string problem);
    /// What `finish` waits for is no longer wanted.
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
