#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// One entry of the catalog: a session that was recorded. A plain value. `id` never changes and is
/// what ties audio, transcripts, diagnostics runs and log lines together.
struct RecordingMetadata {
    UUID id;
    double startedAt = 0;          ///< wall clock, seconds since 1970; the index keeps whole ones
    std::optional<double> endedAt; ///< absent while the session records, and after a crash
    std::string filePath;          ///< the audio file, absolute
    double duration = 0;           ///< seconds of audio
    std::int64_t byteCount = 0;    ///< of the audio file
    std::optional<std::string>
        audioFormat; ///< "wav/pcm_s16le", "m4a/aac", or an import's extension
    std::optional<std::int64_t> sampleRate;
    std::optional<std::int64_t> channelCount;
    std::optional<std::string> note; ///< the user's; absent, never empty
    /// The session meant to leave an M4A: where it did not come to that, a later start of the
    /// program makes it. Absent means no.
    std::optional<bool> awaitsCompression;

    /// `Host::now` at the moment of `startedAt`: the base for times of this run of the program,
    /// which stay right when somebody sets the clock. Never stored; absent in what was read back.
    std::optional<double> monotonicStart;

    /// Whether it came from a file of somebody else's: its format is a bare extension.
    bool isImport() const { return audioFormat && audioFormat->find('/') == std::string::npos; }

    bool operator==(const RecordingMetadata&) const = default;
};

} // namespace tessarune
