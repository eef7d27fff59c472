#include "Tessarune/history/HistoryWordTimeline.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tessarune {

namespace {

using Json = nlohmann::json;
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

/// The members of one JSON object. The first that is missing or of another type makes the whole
/// reading fail; a member that is null counts as missing.
class ObjectReader {
  public:
    explicit ObjectReader(const Json& value) : value_(value), isGood_(value.is_object()) {}

    bool isGood() const { return isGood_; }
    void fail() { isGood_ = false; }

    const Json* optional(const char* key) const {
        if (!isGood_)
            return nullptr;
        const auto found = value_.find(key);
        return found == value_.end() || found->is_null() ? nullptr : &*found;
    }

    std::string string(const char* key) {
        const Json* member = required(key);
        if (!member || !member->is_string())
            return fail(), std::string();
        return member->get<std::string>();
    }

    double number(const char* key) {
        const Json* member = required(key);
        if (!member || !member->is_number())
            return fail(), 0.0;
        return member->get<double>();
    }

    std::int64_t integer(const char* key, std::int64_t missing) {
        const Json* member = optional(key);
        if (!member)
            return missing;
        constexpr double exact = 9007199254740992.0; // 2^53
        const double value = member->is_number() ? member->get<double>() : 0.5;
        if (std::trunc(value) != value || std::abs(value) > exact)
            return fail(), missing;
        return static_cast<std::int64_t>(value);
    }

    std::optional<UUID> identity(const char* key) {
        const Json* member = optional(key);
        if (!member)
            return std::nullopt;
        auto id = member->is_string() ? UUID::parse(member->get<std::string>()) : std::nullopt;
        if (!id)
            fail();
        return id;
    }

    template <typename Element>
    std::vector<Element> array(const char* key, Element (*read)(ObjectReader&)) {
        std::vector<Element> elements;
        const Json* member = optional(key);
        if (!member)
            return elements;
        if (!member->is_array())
            return fail(), elements;
        for (const auto& entry : *member) {
            ObjectReader object(entry);
            elements.push_back(read(object));
            if (!object.isGood())
                return fail(), elements;
        }
        return elements;
    }

  private:
    const Json* required(const char* key) {
        const Json* member = optional(key);
        if (!member)
            fail();
        return member;
    }

    const Json& value_;
    bool isGood_;
};

Timeline::Word readWord(ObjectReader& object) {
    return {object.string("w"), object.number("t"), object.identity("segmentID")};
}

Timeline::Sentence readSentence(ObjectReader& object) {
    return {object.string("source"), object.number("start"), object.number("end"),
            object.identity("segmentID"), object.string("timingKind")};
}

} // namespace

std::string Timeline::encoded() const {
    const Json object{{"schemaVersion", schemaVersion},
                      {"recognitionOptionID", recognitionOptionID},
                      {"timingKind", timingKind},
                      {"words", tessarune::encoded(words)},
                      {"sentences", tessarune::encoded(sentences)}};
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<HistoryWordTimeline> Timeline::decoded(std::string_view json) {
    const Json value = Json::parse(json, nullptr, false);
    ObjectReader object(value);
    HistoryWordTimeline timeline;
    timeline.schemaVersion = object.integer("schemaVersion", 1);
    timeline.recognitionOptionID = object.string("recognitionOptionID");
    timeline.timingKind = object.string("timingKind");
    timeline.words = object.array("words", readWord);
    timeline.sentences = object.array("sentences", readSentence);
    if (!object.isGood())
        return std::nullopt;
    return timeline;
}

} // namespace tessarune
