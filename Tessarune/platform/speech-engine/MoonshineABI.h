#pragma once

#include <cstddef>
#include <cstdint>

/// The part of the speech engine's C interface that this program uses, as of interface version
/// 30000. The library is published without its header. The sizes of the types are checked here;
/// MoonshineLibrary checks the version when it loads the library.
namespace tessarune::moonshine {

inline constexpr std::int32_t interfaceVersion = 30000;

/// The library's error code for an unknown failure.
inline constexpr std::int32_t unknown = -1;

struct Option {
    const char* name;
    const char* value;
};

/// A word; times in seconds from the start of the stream, confidence from 0 to 1.
struct Word {
    const char* text;
    float start;
    float end;
    float confidence;
};

/// A stretch of speech. Lines are never removed; only the last one can be incomplete, and a
/// complete one never changes.
struct Line {
    const char* text;
    const float* audio;
    std::size_t audioCount;
    float start; ///< seconds from the start of the stream
    float duration;
    std::uint64_t id;
    std::int8_t isComplete;
    std::int8_t isUpdated;
    std::int8_t isNew;
    std::int8_t hasTextChanged;
    std::int8_t haveSpeakersChanged;
    const void* speakerSpans;
    std::uint64_t speakerSpanCount;
    std::uint32_t lastLatencyMilliseconds;
    const Word* words;
    std::uint64_t wordCount;
};

/// Owned by the stream or the transcriber that made it; valid until the next call on its owner.
struct Transcript {
    const Line* lines;
    std::uint64_t lineCount;
};

static_assert(sizeof(void*) == 8, "the sizes below are those of a 64-bit computer");
static_assert(sizeof(Word) == 24);
static_assert(sizeof(Line) == 88);
static_assert(sizeof(Transcript) == 16);
static_assert(offsetof(Line, id) == 32 && offsetof(Line, words) == 72);

/// The kind of network in a model's files.
enum class Architecture : std::uint32_t {
    tiny = 0,
    base = 1,
    tinyStreaming = 2,
    baseStreaming = 3,
    smallStreaming = 4,
    mediumStreaming = 5
};

/// The calls in use, named after the library's functions; MoonshineLibrary.cpp has the exact names.
/// A handle or a numeric result below 0 is a failure.
struct Calls {
    using Handle = std::int32_t;

    std::int32_t (*getVersion)();
    const char* (*errorToString)(std::int32_t failure);
    void (*freeBuffer)(void* memory);

    Handle (*loadTranscriberFromFiles)(const char* folder, std::uint32_t architecture,
                                       const Option* options, std::uint64_t optionCount,
                                       std::int32_t version);
    void (*freeTranscriber)(Handle transcriber);
    std::int32_t (*transcribeWithoutStreaming)(Handle transcriber, const float* samples,
                                               std::uint64_t count, std::int32_t sampleRate,
                                               std::uint32_t flags, Transcript** transcript);

    Handle (*createStream)(Handle transcriber, std::uint32_t flags);
    std::int32_t (*freeStream)(Handle transcriber, Handle stream);
    std::int32_t (*startStream)(Handle transcriber, Handle stream);
    std::int32_t (*stopStream)(Handle transcriber, Handle stream);
    std::int32_t (*addAudioToStream)(Handle transcriber, Handle stream, const float* samples,
                                     std::uint64_t count, std::int32_t sampleRate,
                                     std::uint32_t flags); ///< cheap
    std::int32_t (*transcribeStream)(Handle transcriber, Handle stream, std::uint32_t flags,
                                     Transcript** transcript); ///< does the work

    std::int32_t (*getDependencies)(const char* language, const Option* options,
                                    std::uint64_t optionCount, char** json);
};

} // namespace tessarune::moonshine
