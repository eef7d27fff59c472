#include "Tessarune/platform/pulse/PulseDeviceList.h"

#include <utility>

namespace tessarune {

namespace {

std::string text(const char* value) {
    return value ? value : "";
}

AudioFormat formatOf(const pa_sample_spec& spec) {
    return {static_cast<double>(spec.rate), spec.channels};
}

} // namespace

void PulseDeviceList::refresh(pa_context* context) {
    if (isRefreshing_) {
        isRefreshPending_ = true;
        return;
    }
    arriving_ = {};
    hasFailed_ = false;
    // The server answers in order, so the end of the list of sources ends the refresh.
    isRefreshing_ = begin(pa_context_get_server_info(context, takeServer, this)) &&
                    begin(pa_context_get_sink_info_list(context, takeSink, this)) &&
                    begin(pa_context_get_source_info_list(context, takeSource, this));
}

void PulseDeviceList::reset() {
    isRefreshing_ = false;
    isRefreshPending_ = false;
}

void PulseDeviceList::takeServer(pa_context*, const pa_server_info* info, void* self) {
    auto& list = *static_cast<PulseDeviceList*>(self);
    list.hasFailed_ |= !info;
    if (!info)
        return;
    auto& devices = list.arriving_.devices;
    devices.defaultInputID = text(info->default_source_name);
    devices.defaultOutputID = text(info->default_sink_name);
}

void PulseDeviceList::takeSink(pa_context*, const pa_sink_info* info, int end, void* self) {
    auto& list = *static_cast<PulseDeviceList*>(self);
    list.hasFailed_ |= end < 0;
    if (end != 0)
        return;
    list.arriving_.devices.outputs.push_back({text(info->name), text(info->description),
                                              text(info->monitor_source_name),
                                              formatOf(info->sample_spec)});
}

void PulseDeviceList::takeSource(pa_context* context, const pa_source_info* info, int end,
                                 void* self) {
    auto& list = *static_cast<PulseDeviceList*>(self);
    if (end == 0) {
        list.arriving_.channelMaps[text(info->name)] = info->channel_map;
        if (info->monitor_of_sink == PA_INVALID_INDEX) {
            list.arriving_.devices.inputs.push_back(
                {text(info->name), text(info->description), formatOf(info->sample_spec)});
        }
        return;
    }
    list.hasFailed_ |= end < 0;
    list.isRefreshing_ = false;
    if (std::exchange(list.isRefreshPending_, false))
        list.refresh(context);
    else if (!list.hasFailed_)
        list.onAnswer_(std::move(list.arriving_));
}

} // namespace tessarune
