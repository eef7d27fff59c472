#pragma once

#include "Terminal/CaptionOutput.h"
#include "Terminal/CaptionSound.h"
#include "Terminal/Program.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "bench/live/ResultLatency.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tessarune {

/// A session of the real program over a file at real speed, from the capture to the printed
/// captions, with a watched engine. Main queue.
class LiveSession {
  public:
    /// `platform` is the program's recogniser, with an engine that `latency` watches.
    LiveSession(Program& program, SpeechPlatform platform, ResultLatency& latency,
                CaptionOutput output);

    /// Runs the session. Calls `onListening` when everything is loaded and the sound begins.
    /// Throws if the session does not start or the file cannot be read to its end.
    Task<void> run(std::filesystem::path file, std::function<void()> onListening);

  private:
    void makeStore();
    void observe();

    Program& program_;
    SpeechPlatform platform_;
    ResultLatency& latency_;
    CaptionOutput output_;
    CaptionSound sound_;
    std::unique_ptr<PermissionsManager> permissions_;
    std::shared_ptr<LiveTranscriptStore> store_;
    OneShot<bool> started_;
    OneShot<bool> ended_;
};

} // namespace tessarune
