#pragma once

#include "Tessarune/platform/pulse/PrivateSoundServer.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "TessaruneCore/host/Task.h"

namespace tessarune {

/// Sound to caption on a computer without a sound server: a private server without hardware, and
/// the sample speech played into it. Main queue.
class DemoSound {
  public:
    /// Starts the server. Throws if this fails; the text says why.
    explicit DemoSound(Host& host);

    SoundServer& server() { return server_; }

    /// Plays the sample once. Resumes when it has been heard.
    Task<void> play();

  private:
    Host& host_;
    PrivateSoundServer private_;
    PulseSoundServer server_;
};

} // namespace tessarune
