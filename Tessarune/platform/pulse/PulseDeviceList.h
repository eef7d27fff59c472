#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/platform/pulse/PulseSupport.h"

#include <functional>
#include <map>
#include <string>

namespace tessarune {

/// Asks the server for its devices and defaults. Used under the main loop's lock.
///
/// All refreshes that are requested while one runs are combined into one more, so a burst of
/// changes costs two refreshes. If the server answers a refresh only in part, nothing changes.
class PulseDeviceList {
  public:
    struct Answer {
        SoundDevices devices;
        /// By source, including monitors: the channel map that a stream must request to receive the
        /// channels unchanged.
        std::map<std::string, pa_channel_map> channelMaps;
    };

    explicit PulseDeviceList(std::function<void(Answer)> onAnswer)
        : onAnswer_(std::move(onAnswer)) {}

    void refresh(pa_context* context);
    /// Forgets running requests; a context that died never answers them.
    void reset();

  private:
    static void takeServer(pa_context* context, const pa_server_info* info, void* self);
    static void takeSink(pa_context* context, const pa_sink_info* info, int end, void* self);
    static void takeSource(pa_context* context, const pa_source_info* info, int end, void* self);

    std::function<void(Answer)> onAnswer_;
    Answer arriving_;
    bool hasFailed_ = false; ///< a part of `arriving_` is missing
    bool isRefreshing_ = false;
    bool isRefreshPending_ = false;
};

} // namespace tessarune
