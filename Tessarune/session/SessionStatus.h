#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// The content of the session's status line. A value; views call for its text.
struct SessionStatus {
    enum class Kind {
        none,
        idle,     ///< an invitation to begin
        checking, ///< permissions, recogniser and capture are being made ready
        silent,   ///< the system delivers no sound
        interrupted,
        listeningTo, ///< the capture has changed to another device, or delivers sound again
        inactive,    ///< the session ended because of so much silence
        saving,
        stillSaving, ///< a start came too early
        compressing,
        compressed,
        compressionFailed,
        transcriptNotSaved,
        translation, ///< the translation's message
    };

    Kind kind = Kind::none;
    std::string detail{};     ///< `listeningTo`: the device; `translation`: the text
    std::int64_t minutes = 0; ///< `inactive`: without sound

    /// In the user's language; empty for `none`.
    std::string text() const;

    bool operator==(const SessionStatus&) const = default;
};

} // namespace tessarune
