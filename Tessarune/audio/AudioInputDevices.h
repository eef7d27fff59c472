#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"

#include <string>
#include <vector>

namespace tessarune {

/// The microphones that a session can listen to. Any thread.
namespace AudioInputDevices {

struct Device {
    std::string id;
    std::string name;
    bool isDefaultInput = false;

    bool operator==(const Device&) const = default;
};

/// The devices in the server's order, without those that have no channels.
std::vector<Device> inputDevices(const SoundServer& server);

} // namespace AudioInputDevices

namespace AudioSourceDisplayName {

/// The display name of the source; the id if its device is absent.
std::string name(const AudioSource& source,
                 const std::vector<AudioInputDevices::Device>& inputDevices);

} // namespace AudioSourceDisplayName

} // namespace tessarune
