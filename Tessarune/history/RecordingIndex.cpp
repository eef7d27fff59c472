#include "Tessarune/history/RecordingIndex.h"

#include "TessaruneCore/text/BoundedJSON.h"
#include "TessaruneCore/text/ISO8601Date.h"
#include "TessaruneCore/text/PrettyJSON.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

using Json = nlohmann::json;

// How each type of field stands in JSON.

bool read(const Json& value, std::string& text) {
    if (!value.is_string())
        return false;
    text = value.get<std::string>();
    return true;
}

bool read(const Json& value, UUID& id) {
    const auto parsed = value.is_string() ? UUID::parse(value.get<std::string>()) : std::nullopt;
    id = parsed.value_or(UUID());
    return parsed.has_value();
}

bool read(const Json& value, double& number) {
    if (!value.is_number())
        return false;
    number = value.get<double>();
    return true;
}

bool read(const Json& value, std::int64_t& integer) {
    constexpr double exact = 9007199254740992.0; // 2^53
    if (value.is_number_integer()) {
        integer = value.get<std::int64_t>();
        return !value.is_number_unsigned() || integer >= 0;
    }
    const double number = value.is_number() ? value.get<double>() : 0.5;
    if (std::trunc(number) != number || std::abs(number) > exact)
        return false;
    integer = static_cast<std::int64_t>(number);
    return true;
}

/// A moment, so that it is told from a number.
struct Date {
    double& seconds;
};

bool read(const Json& value, Date date) {
    const auto parsed =
        value.is_string() ? ISO8601Date::parse(value.get<std::string>()) : std::nullopt;
    date.seconds = parsed.value_or(0);
    return parsed.has_value();
}

Json written(const std::string& text) {
    return text;
}
Json written(const UUID& id) {
    return id.text();
}
Json written(double number) {
    return std::isfinite(number) ? number : 0.0;
}
Json written(std::int64_t integer) {
    return integer;
}

bool readRequired(const Json& object, const char* key, auto&& field) {
    const auto found = object.find(key);
    return found != object.end() && read(*found, std::forward<decltype(field)>(field));
}

/// A key that is missing or null is an absent value.
template <typename Value>
bool readOptional(const Json& object, const char* key, std::optional<Value>& field) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return true;
    return read(*found, field.emplace());
}

bool readOptionalDate(const Json& object, const char* key, std::optional<double>& field) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return true;
    return read(*found, Date{field.emplace()});
}

std::optional<RecordingMetadata> recordingOf(const Json& object) {
    RecordingMetadata recording;
    if (!object.is_object() || !readRequired(object, "id", recording.id) ||
        !readRequired(object, "startedAt", Date{recording.startedAt}) ||
        !readOptionalDate(object, "endedAt", recording.endedAt) ||
        !readRequired(object, "filePath", recording.filePath) ||
        !readRequired(object, "duration", recording.duration) ||
        !readRequired(object, "byteCount", recording.byteCount) ||
        !readOptional(object, "audioFormat", recording.audioFormat) ||
        !readOptional(object, "sampleRate", recording.sampleRate) ||
        !readOptional(object, "channelCount", recording.channelCount) ||
        !readOptional(object, "note", recording.note))
        return std::nullopt;
    return recording;
}

std::optional<UUID> idOf(const Json& value) {
    UUID id;
    if (!value.is_object() || !readRequired(value, "id", id))
        return std::nullopt;
    return id;
}

/// Writes the fields of a recording over an object of which `before` was read. A field that is as
/// before keeps its written form, which may hold more than we read.
class FieldWriter {
  public:
    FieldWriter(Json& object, const std::optional<RecordingMetadata>& before,
                const RecordingMetadata& now)
        : object_(object), before_(before), now_(now) {}

    template <typename Value>
    void field(const char* key, Value RecordingMetadata::*member) {
        if (!before_ || (*before_).*member != now_.*member)
            put(key, now_.*member);
    }
    void date(const char* key, double RecordingMetadata::*member) {
        if (!before_ || (*before_).*member != now_.*member)
            object_[key] = ISO8601Date::text(now_.*member);
    }
    void date(const char* key, std::optional<double> RecordingMetadata::*member) {
        if (before_ && (*before_).*member == now_.*member)
            return;
        if (now_.*member)
            object_[key] = ISO8601Date::text(*(now_.*member));
        else
            object_.erase(key);
    }

  private:
    template <typename Value>
    void put(const char* key, const Value& value) {
        object_[key] = written(value);
    }
    template <typename Value>
    void put(const char* key, const std::optional<Value>& value) {
        if (value)
            put(key, *value);
        else
            object_.erase(key);
    }

    Json& object_;
    const std::optional<RecordingMetadata>& before_;
    const RecordingMetadata& now_;
};

void write(Json& object, const std::optional<RecordingMetadata>& before,
           const RecordingMetadata& now) {
    FieldWriter writer(object, before, now);
    writer.field("id", &RecordingMetadata::id);
    writer.date("startedAt", &RecordingMetadata::startedAt);
    writer.date("endedAt", &RecordingMetadata::endedAt);
    writer.field("filePath", &RecordingMetadata::filePath);
    writer.field("duration", &RecordingMetadata::duration);
    writer.field("byteCount", &RecordingMetadata::byteCount);
    writer.field("audioFormat", &RecordingMetadata::audioFormat);
    writer.field("sampleRate", &RecordingMetadata::sampleRate);
    writer.field("channelCount", &RecordingMetadata::channelCount);
    writer.field("note", &RecordingMetadata::note);
}

/// Calls `found` with each stretch from a "{" to its "}" that is not nested deeper than entries
/// are, innermost first. Strings are passed over; they end at a line's end at the latest, so that a
/// lost quotation mark costs one line.
void forEachObject(std::string_view text, const std::function<void(std::string_view)>& found) {
    constexpr std::size_t deepest = 8;
    std::vector<std::size_t> open;
    bool isInString = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isInString) {
            if (c == '\\')
                ++at;
            else if (c == '"' || c == '\n')
                isInString = false;
        } else if (c == '"') {
            isInString = true;
        } else if (c == '{') {
            if (open.size() == deepest)
                open.erase(open.begin());
            open.push_back(at);
        } else if (c == '}' && !open.empty()) {
            found(text.substr(open.back(), at + 1 - open.back()));
            open.pop_back();
        }
    }
}

} // namespace

std::optional<RecordingIndex> RecordingIndex::decoded(std::string_view json) {
    Json array = BoundedJSON::parse(json);
    if (!array.is_array())
        return std::nullopt;
    RecordingIndex index;
    for (auto& value : array) {
        auto source = std::make_shared<const Json>(std::move(value));
        index.elements_.push_back({source, recordingOf(*source)});
    }
    return index;
}

RecordingIndex RecordingIndex::salvaged(std::string_view damaged,
                                        const std::vector<std::string>& entries) {
    RecordingIndex index;
    std::set<UUID> known;
    const auto adopt = [&](std::string_view json) {
        auto source = std::make_shared<const Json>(BoundedJSON::parse(json));
        auto recording = recordingOf(*source);
        if (recording && known.insert(recording->id).second)
            index.elements_.push_back({std::move(source), std::move(recording)});
    };
    forEachObject(damaged, adopt);
    for (const auto& entry : entries)
        adopt(entry);
    return index;
}

std::vector<RecordingMetadata> RecordingIndex::recordings() const {
    std::vector<RecordingMetadata> all;
    for (const auto& element : elements_) {
        if (element.recording)
            all.push_back(*element.recording);
    }
    return all;
}

std::optional<RecordingMetadata> RecordingIndex::find(const UUID& id) const {
    for (const auto& element : elements_) {
        if (element.recording && element.recording->id == id)
            return element.recording;
    }
    return std::nullopt;
}

std::set<UUID> RecordingIndex::ids() const {
    std::set<UUID> all;
    for (const auto& element : elements_) {
        if (const auto id = idOf(*element.source))
            all.insert(*id);
    }
    return all;
}

bool RecordingIndex::hasNamelessElements() const {
    return std::any_of(elements_.begin(), elements_.end(),
                       [](const Element& element) { return !idOf(*element.source); });
}

void RecordingIndex::put(const RecordingMetadata& recording) {
    const auto same = std::find_if(elements_.begin(), elements_.end(), [&](const Element& element) {
        return element.recording && element.recording->id == recording.id;
    });
    Element changed = same == elements_.end() ? Element() : *same;
    Json object = changed.source ? *changed.source : Json::object();
    write(object, changed.recording, recording);
    changed.source = std::make_shared<const Json>(std::move(object));
    changed.recording = recording;
    if (same == elements_.end())
        elements_.push_back(std::move(changed));
    else
        *same = std::move(changed);
}

bool RecordingIndex::removeIf(const std::function<bool(const RecordingMetadata&)>& matches) {
    return std::erase_if(elements_, [&](const Element& element) {
               return element.recording && matches(*element.recording);
           }) > 0;
}

void RecordingIndex::sort() {
    std::stable_sort(elements_.begin(), elements_.end(), [](const Element& a, const Element& b) {
        if (!a.recording || !b.recording)
            return a.recording.has_value() && !b.recording.has_value();
        return a.recording->startedAt > b.recording->startedAt;
    });
}

std::string RecordingIndex::encoded() const {
    Json array = Json::array();
    for (const auto& element : elements_)
        array.push_back(*element.source);
    // Nothing in it is infinite: neither what was parsed nor what `written` gave.
    return PrettyJSON::encode(array).value() + "\n";
}

std::optional<std::string> RecordingIndex::encodedEntry(const UUID& id) const {
    for (const auto& element : elements_) {
        if (element.recording && element.recording->id == id)
            return PrettyJSON::encode(*element.source).value() + "\n";
    }
    return std::nullopt;
}

} // namespace tessarune
