#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// What the session has to say in its status line. A value; views ask for its words.
struct SessionStatus {
    enum class Kind {
        none,
        idle,     ///< an invitation to begin
        checking, ///< permissions, recogniser and capture are being made ready
        silent,   ///< nothing is heard from the system
        interrupted,
        listeningTo, ///< the capture went over to another device, or gives sound again
        inactive,    ///< so long without sound that the session ends by itself
        saving,
        stillSaving, ///< a start came too early
        compressing,
        compressed,
        compressionFailed,
        transcriptNotSaved,
        translation, ///< what the translation has to say
    };

    Kind kind = Kind::none;
    std::string detail{};     ///< `listeningTo`: the device; `translation`: the words
    std::int64_t minutes = 0; ///< `inactive`: without sound

    /// In the user's language; empty for `none`.
    std::string text() const;

    bool operator==(const SessionStatus&) const = default;
};

} // namespace tessarune
