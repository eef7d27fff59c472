#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// The content of the session's status line, independent of the language. A value.
struct SessionStatus {
    enum class Kind {
        none,
        idle,     ///< an invitation to begin
        checking, ///< permissions, recogniser and capture are being prepared
        silent,   ///< the system delivers no sound
        interrupted,
        listeningTo, ///< the capture has changed to another device, or delivers sound again
        inactive,    ///< the session stops because of a long silence
        saving,
        stillSaving, ///< a start was refused because of the save
        compressing,
        compressed,
        compressionFailed,
        transcriptNotSaved,
        translation, ///< the translation's message
    };

    Kind kind = Kind::none;
    std::string detail{};     ///< `listeningTo`: the device; `translation`: the text
    std::int64_t minutes = 0; ///< `inactive`: the length of the silence

    /// The text in the user's language; empty for `none`.
    std::string text() const;

    bool operator==(const SessionStatus&) const = default;
};

} // namespace tessarune
