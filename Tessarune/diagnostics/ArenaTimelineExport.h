#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// timeline.json: every committed row of a run with its times, for tools that compare runs. Live
/// sessions and replays write the same format. Times of rows and words are seconds from the run's
/// origin. Pure functions.
namespace tessarune::ArenaTimelineExport {

struct Run {
    std::string id;
    double startedWall = 0; ///< seconds since 1970
    std::string audioFile;
    double audioDurationSec = 0;
    std::string importMode; ///< "live" or "replay"
    double sampleRate = 0;  ///< in Hz; 0 if unknown
};

struct Caps {
    bool punctuatesNatively = false;
    bool selfSegments = false;
    bool streamsWordByWord = false;
    bool providesWordTimestamps = false;
    bool isOnline = false;

    Caps() = default;
    explicit Caps(const EngineCapabilities& capabilities);
};

struct Config {
    bool segment = false;
    bool freeze = false;
    bool clauseLevel = false;
    bool softClauseLevel = false;
    double freezeStableSeconds = 0;
    std::int64_t smoothPaceMS = 0;
    bool partialPunctuation = false;

    Config() = default;
    Config(const CaptionCore::Config& config, std::int64_t pace, bool punctuatesPartials);
};

struct Word {
    std::string w;
    std::optional<double> firstSeenAt;
    std::optional<double> revealedAt;
    std::optional<double> audioStart;
    std::optional<double> audioEnd;
};

struct Segment {
    std::string id;
    std::string text;
    std::optional<std::string> translatedText;
    std::optional<std::string> translationError;
    std::string freezeKind;
    std::optional<double> startedAt;
    std::optional<double> endedAt;
    std::optional<double> firstSeenAt;
    std::optional<double> audioStart;
    std::optional<double> audioEnd;
    std::optional<double> committedAt;
    std::int64_t revisionCount = 0;
    std::optional<std::vector<Word>> words;
};

struct Engine {
    std::string optionID;
    std::string title;
    Caps caps;
    Config config;
    std::vector<Segment> segments;
};

struct Reference {
    std::optional<std::string> srt;
};

struct File {
    std::int64_t schemaVersion = 1;
    Run run;
    std::vector<Engine> engines;
    Reference reference;
};

/// Subtracts `t0` from all times that are positive. All other times are absent in the result.
Engine buildEngine(std::string optionID, std::string title, const Caps& caps, const Config& config,
                   const CaptionCore::Rows& segments, const CaptionCore::WordEvents& wordEvents,
                   double t0);

/// Returns the file as pretty-printed JSON with sorted keys, without keys for absent values.
/// `nullopt` if a number is not finite.
std::optional<std::string> encode(const File& file);

} // namespace tessarune::ArenaTimelineExport
