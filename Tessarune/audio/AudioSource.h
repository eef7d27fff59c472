#pragma once

#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// The source of a session's sound: the computer's output, or a microphone.
///
/// Two microphones are equal if their device ids are; no id means the current default input.
class AudioSource {
  public:
    static AudioSource systemAudio() { return {}; }
    static AudioSource microphone(std::optional<std::string> deviceID = std::nullopt) {
        AudioSource source;
        source.isMicrophone_ = true;
        source.deviceID_ = std::move(deviceID);
        return source;
    }

    bool isSystemAudio() const { return !isMicrophone_; }
    bool isMicrophone() const { return isMicrophone_; }
    /// The microphone's device id; `nullopt` for the default input and for system audio.
    const std::optional<std::string>& deviceID() const { return deviceID_; }

    /// "systemAudio", or "microphone:" and the device id or "default".
    std::string logName() const {
        return isMicrophone_ ? "microphone:" + deviceID_.value_or("default") : "systemAudio";
    }

    bool operator==(const AudioSource&) const = default;

  private:
    AudioSource() = default;

    bool isMicrophone_ = false;
    std::optional<std::string> deviceID_;
};

} // namespace tessarune
