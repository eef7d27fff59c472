#include "Tessarune/audio/AudioInputDevices.h"

#include "TessaruneCore/text/Localization.h"

namespace tessarune {

namespace AudioInputDevices {

std::vector<Device> inputDevices(const SoundServer& server) {
    const SoundDevices devices = server.devices();
    std::vector<Device> found;
    for (const auto& input : devices.inputs) {
        if (input.format.channels > 0)
            found.push_back({input.id, input.name, input.id == devices.defaultInputID});
    }
    return found;
}

} // namespace AudioInputDevices

namespace AudioSourceDisplayName {

std::string name(const AudioSource& source,
                 const std::vector<AudioInputDevices::Device>& inputDevices) {
    if (source.isSystemAudio())
        return localized("系统声音");
    if (!source.deviceID())
        return localized("系统默认麦克风");
    for (const auto& device : inputDevices) {
        if (device.id == *source.deviceID())
            return device.name;
    }
    return *source.deviceID();
}

} // namespace AudioSourceDisplayName

} // namespace tessarune
