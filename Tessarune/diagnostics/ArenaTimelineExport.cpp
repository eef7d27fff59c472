#include "Tessarune/diagnostics/ArenaTimelineExport.h"

#include "TessaruneCore/text/JSON.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace tessarune::ArenaTimelineExport {

namespace {

using Json = nlohmann::json;

std::optional<double> relative(const std::optional<double>& time, double t0) {
    if (!time || !(*time > 0))
        return std::nullopt;
    return *time - t0;
}

Word makeWord(const WordEvent& event, double t0) {
    return {
        .w = event.word,
        .firstSeenAt = relative(event.firstSeenAt, t0),
        .revealedAt = relative(event.revealedAt, t0),
        .audioStart = relative(event.audioStart, t0),
        .audioEnd = relative(event.audioEnd, t0),
    };
}

/// Sets the span of the sound of a row: from the earliest to the latest of its words' times.
void setAudioSpan(Segment& segment, const std::vector<WordEvent>& events, double t0) {
    std::optional<double> smallest;
    std::optional<double> largest;
    for (const WordEvent& event : events) {
        for (const auto& time : {event.audioStart, event.audioEnd}) {
            if (!time)
                continue;
            smallest = std::min(smallest.value_or(*time), *time);
            largest = std::max(largest.value_or(*time), *time);
        }
    }
    segment.audioStart = relative(smallest, t0);
    segment.audioEnd = relative(largest, t0);
}

Segment makeSegment(const CaptionSegment& row, const std::vector<WordEvent>* events, double t0) {
    Segment segment;
    segment.id = row.id.text();
    segment.text = row.sourceText;
    segment.translatedText = row.translatedText;
    segment.translationError = row.translationError;
    segment.freezeKind = name(row.freezeKind);
    segment.startedAt = relative(row.startedAt, t0);
    segment.endedAt = relative(row.endedAt, t0);
    segment.firstSeenAt = relative(row.firstSeenAt, t0);
    segment.committedAt = relative(row.committedAt, t0);
    segment.revisionCount = row.revisionCount;
    if (events && !events->empty()) {
        setAudioSpan(segment, *events, t0);
        segment.words.emplace();
        for (const WordEvent& event : *events)
            segment.words->push_back(makeWord(event, t0));
    }
    return segment;
}

template <typename T>
void put(Json& object, const char* key, const std::optional<T>& value) {
    if (value)
        object[key] = *value;
}

Json json(const Word& word) {
    Json object{{"w", word.w}};
    put(object, "firstSeenAt", word.firstSeenAt);
    put(object, "revealedAt", word.revealedAt);
    put(object, "audioStart", word.audioStart);
    put(object, "audioEnd", word.audioEnd);
    return object;
}

Json json(const Segment& segment) {
    Json object{
        {"id", segment.id},
        {"text", segment.text},
        {"freezeKind", segment.freezeKind},
        {"revisionCount", segment.revisionCount},
    };
    put(object, "translatedText", segment.translatedText);
    put(object, "translationError", segment.translationError);
    put(object, "startedAt", segment.startedAt);
    put(object, "endedAt", segment.endedAt);
    put(object, "firstSeenAt", segment.firstSeenAt);
    put(object, "audioStart", segment.audioStart);
    put(object, "audioEnd", segment.audioEnd);
    put(object, "committedAt", segment.committedAt);
    if (segment.words) {
        Json words = Json::array();
        for (const Word& word : *segment.words)
            words.push_back(json(word));
        object["words"] = std::move(words);
    }
    return object;
}

Json json(const Caps& caps) {
    return {
        {"punctuatesNatively", caps.punctuatesNatively},
        {"selfSegments", caps.selfSegments},
        {"streamsWordByWord", caps.streamsWordByWord},
        {"providesWordTimestamps", caps.providesWordTimestamps},
        {"isOnline", caps.isOnline},
    };
}

Json json(const Config& config) {
    return {
        {"segment", config.segment},
        {"freeze", config.freeze},
        {"clauseLevel", config.clauseLevel},
        {"softClauseLevel", config.softClauseLevel},
        {"freezeStableSeconds", config.freezeStableSeconds},
        {"smoothPaceMS", config.smoothPaceMS},
        {"partialPunctuation", config.partialPunctuation},
    };
}

Json json(const Engine& engine) {
    Json segments = Json::array();
    for (const Segment& segment : engine.segments)
        segments.push_back(json(segment));
    return {
        {"optionID", engine.optionID},     {"title", engine.title},
        {"caps", json(engine.caps)},       {"config", json(engine.config)},
        {"segments", std::move(segments)},
    };
}

Json json(const Run& run) {
    return {
        {"id", run.id},
        {"startedWall", run.startedWall},
        {"audioFile", run.audioFile},
        {"audioDurationSec", run.audioDurationSec},
        {"importMode", run.importMode},
        {"sampleRate", run.sampleRate},
    };
}

} // namespace

Caps::Caps(const EngineCapabilities& capabilities)
    : punctuatesNatively(capabilities.punctuatesNatively),
      selfSegments(capabilities.selfSegments),
      streamsWordByWord(capabilities.streamsWordByWord),
      providesWordTimestamps(capabilities.providesWordTimestamps),
      isOnline(capabilities.isOnline) {}

Config::Config(const CaptionCore::Config& config, std::int64_t pace, bool punctuatesPartials)
    : segment(config.segment),
      freeze(config.freeze),
      clauseLevel(config.clauseLevel),
      softClauseLevel(config.softClauseLevel),
      freezeStableSeconds(config.freezeStableSeconds),
      smoothPaceMS(pace),
      partialPunctuation(punctuatesPartials) {}

Engine buildEngine(std::string optionID, std::string title, const Caps& caps, const Config& config,
                   const CaptionCore::Rows& segments, const CaptionCore::WordEvents& wordEvents,
                   double t0) {
    Engine engine{std::move(optionID), std::move(title), caps, config, {}};
    engine.segments.reserve(segments.size());
    for (const CaptionSegment& row : segments) {
        const auto found = wordEvents.find(row.id);
        const auto* events = found == wordEvents.end() ? nullptr : &found->second;
        engine.segments.push_back(makeSegment(row, events, t0));
    }
    return engine;
}

std::optional<std::string> encode(const File& file) {
    Json engines = Json::array();
    for (const Engine& engine : file.engines)
        engines.push_back(json(engine));
    Json reference = Json::object();
    put(reference, "srt", file.reference.srt);
    return JSON::pretty({
        {"schemaVersion", file.schemaVersion},
        {"run", json(file.run)},
        {"engines", std::move(engines)},
        {"reference", std::move(reference)},
    });
}

} // namespace tessarune::ArenaTimelineExport
