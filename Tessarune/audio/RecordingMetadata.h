#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// One entry of the catalog: a recorded session. A plain value. `id` never changes and links audio,
/// transcripts, diagnostics runs and log lines.
struct RecordingMetadata {
    UUID id;
    double startedAt = 0;          ///< wall clock, seconds since 1970; whole seconds in the index
    std::optional<double> endedAt; ///< absent during the session, and from a crash to the repair
    std::string filePath;          ///< the audio file, absolute
    double duration = 0;           ///< seconds of audio
    std::int64_t byteCount = 0;    ///< of the audio file
    /// "wav/pcm_s16le", "m4a/aac", or the file name extension of an import.
    std::optional<std::string> audioFormat;
    std::optional<std::int64_t> sampleRate;
    std::optional<std::int64_t> channelCount;
    std::optional<std::string> note; ///< written by the user; never empty
    /// Whether the recording is still to become an M4A; if its compression fails or is interrupted,
    /// a later launch of the program tries again. Absent means no.
    std::optional<bool> awaitsCompression;

    /// `Host::now` at `startedAt`. Times during the recording count from this moment, so they stay
    /// correct if the wall clock is set. Never stored; absent in entries from the disk.
    std::optional<double> monotonicStart;

    /// Whether the recording was imported; `audioFormat` is then a file name extension.
    bool isImport() const { return audioFormat && audioFormat->find('/') == std::string::npos; }

    bool operator==(const RecordingMetadata&) const = default;
};

} // namespace tessarune
