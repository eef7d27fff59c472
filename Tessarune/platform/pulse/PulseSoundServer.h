#pragma once

#include "Tessarune/audio/SoundServer.h"

#include <memory>
#include <string>

namespace tessarune {

class PulseConnection;

/// The desktop's sound server through its PulseAudio protocol, which PipeWire speaks as well. Needs
/// neither D-Bus nor a display.
class PulseSoundServer final : public SoundServer {
  public:
    /// `address` as in the variable PULSE_SERVER; empty for the user's own server.
    explicit PulseSoundServer(std::string address = {});
    ~PulseSoundServer() override;

    Task<void> connect(Executor resumeOn) override;
    SoundServerState state() const override;
    SoundDevices devices() const override;
    [[nodiscard]] Subscription observe(Executor executor, std::function<void()> onChange) override;
    Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) override;
    Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                             Executor executor) override;

  private:
    class Observers;
    std::shared_ptr<Observers> observers_;
    std::shared_ptr<PulseConnection> connection_;
};

} // namespace tessarune
