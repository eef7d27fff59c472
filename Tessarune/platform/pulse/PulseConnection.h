#pragma once

#include "Tessarune/platform/pulse/PulseDeviceList.h"
#include "Tessarune/platform/pulse/PulseSupport.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/host/OneShot.h"

#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// The connection to the server, its thread, and the state that the server reports.
///
/// After the first success the connection is maintained: when it breaks, it is retried with growing
/// pauses. It never starts a server: a user who has ended the server does not want it back, and on
/// a computer without sound hardware, the silent output of a new server would hide this fact.
///
/// Any thread, unless noted; "the lock" is the lock of the loop. Owned by the sound server and its
/// streams. The loop's thread must not destroy it.
class PulseConnection {
  public:
    static constexpr double connectTimeoutSeconds = 5.0;
    static constexpr double shortestPauseSeconds = 0.25;
    static constexpr double longestPauseSeconds = 2.0;

    /// `address` as in PULSE_SERVER; empty for the user's own server. `onChange` is called under
    /// the lock, on the loop's thread or in `connect`, after the state or the devices have changed.
    PulseConnection(std::string address, std::function<void()> onChange);
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    /// Resumes `done` when connected and the devices are known, or when the attempt has failed.
    void connect(OneShot<PulseOutcome> done);

    SoundServerState state() const;
    SoundDevices devices() const;

    pa_threaded_mainloop* loop() const { return loop_; }
    /// Null without a connection. Under the lock.
    pa_context* context() const { return isReady_ ? context_ : nullptr; }
    /// The channels of a source as the server lists them; null for an unknown source. Under the
    /// lock.
    const pa_channel_map* channelMap(const std::string& sourceID) const;

  private:
    /// The failure that the library reports for the connection. Under the lock.
    PulseOutcome failure() const;
    void attempt();
    void handleState();
    void handleDevices(PulseDeviceList::Answer answer);
    void lose(const PulseOutcome& reason);
    void dropContext();
    void publish(SoundServerState state, SoundDevices devices);
    void resumeWaiters(const PulseOutcome& outcome);

    const std::string address_;
    const std::function<void()> onChange_;
    pa_threaded_mainloop* loop_;

    // Under the loop's lock:
    pa_context* context_ = nullptr;
    bool isReady_ = false;
    bool isMaintained_ = false;         ///< whether an attempt has ever succeeded
    double pauseSeconds_ = 0;           ///< before the last retry
    std::unique_ptr<PulseTimer> timer_; ///< limits the running attempt, or starts the next one
    PulseDeviceList list_;
    std::map<std::string, pa_channel_map> channelMaps_;
    std::vector<OneShot<PulseOutcome>> waiters_;

    mutable Mutex snapshotMutex_; ///< held only while values are copied
    SoundServerState state_ GUARDED_BY(snapshotMutex_) = SoundServerState::disconnected;
    SoundDevices devices_ GUARDED_BY(snapshotMutex_);
};

} // namespace tessarune
