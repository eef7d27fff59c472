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

/// As the server lists them, without those that have no channel.
std::vector<Device> inputDevices(const SoundServer& server);

} // namespace AudioInputDevices

namespace AudioSourceDisplayName {

/// What a person calls the source. A device that is not there at the moment shows its id.
std::string name(const AudioSource& source,
                 const std::vector<AudioInputDevices::Device>& inputDevices);

} // namespace AudioSourceDisplayName

} // namespace tessarune
