#include "Tessarune/history/HistoryWordTimeline.h"
#include "TessaruneCore/text/JSON.h"

namespace tessarune {

namespace {

using Json = JSON::Value;
using Timeline = HistoryWordTimeline;

Json encoded(const Timeline::Word& word) {
    Json object{{"w", word.w}, {"t", word.t}};
    if (word.segmentID)
        object["segmentID"] = word.segmentID->text();
    return object;
}

Json encoded(const Timeline::Sentence& sentence) {
    Json object{{"source", sentence.source},
                {"start", sentence.start},
                {"end", sentence.end},
                {"timingKind", sentence.timingKind}};
    if (sentence.segmentID)
        object["segmentID"] = sentence.segmentID->text();
    return object;
}

template <typename Element>
Json encoded(const std::vector<Element>& elements) {
    Json array = Json::array();
    for (const auto& element : elements)
        array.push_back(encoded(element));
    return array;
}

void readWord(JSON::Reader& object, Timeline::Word& word) {
    object.required("w", word.w).required("t", word.t).optional("segmentID", word.segmentID);
}

void readSentence(JSON::Reader& object, Timeline::Sentence& sentence) {
    object.required("source", sentence.source)
        .required("start", sentence.start)
        .required("end", sentence.end)
        .optional("segmentID", sentence.segmentID)
        .required("timingKind", sentence.timingKind);
}

} // namespace

std::string Timeline::encoded() const {
    const Json object{{"schemaVersion", schemaVersion},
                      {"recognitionOptionID", recognitionOptionID},
                      {"timingKind", timingKind},
                      {"words", tessarune::encoded(words)},
                      {"sentences", tessarune::encoded(sentences)}};
    return JSON::pretty(object).value_or("null") + "\n";
}

std::optional<HistoryWordTimeline> Timeline::decoded(std::string_view json) {
    const Json value = JSON::parse(json);
    HistoryWordTimeline timeline;
    timeline.schemaVersion = 1;
    JSON::Reader object(value);
    object.optional("schemaVersion", timeline.schemaVersion)
        .required("recognitionOptionID", timeline.recognitionOptionID)
        .required("timingKind", timeline.timingKind)
        .optional("words", timeline.words, readWord)
        .optional("sentences", timeline.sentences, readSentence);
    if (!object.isGood())
        return std::nullopt;
    return timeline;
}

} // namespace tessarune
