#include "Tessarune/history/RecordingIndex.h"

#include "TessaruneCore/text/ISO8601Date.h"
#include "TessaruneCore/text/JSON.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

using Json = JSON::Value;

Json written(const std::string& text) {
    return text;
}
Json written(const UUID& id) {
    return id.text();
}
Json written(bool flag) {
    return flag;
}
Json written(double number) {
    return std::isfinite(number) ? number : 0.0;
}
Json written(std::int64_t integer) {
    return integer;
}

std::optional<RecordingMetadata> recordingOf(const Json& object) {
    RecordingMetadata recording;
    JSON::Date startedAt;
    std::optional<JSON::Date> endedAt;
    JSON::Reader reader(object);
    reader.required("id", recording.id)
        .required("startedAt", startedAt)
        .optional("endedAt", endedAt)
        .required("filePath", recording.filePath)
        .required("duration", recording.duration)
        .required("byteCount", recording.byteCount)
        .optional("audioFormat", recording.audioFormat)
        .optional("sampleRate", recording.sampleRate)
        .optional("channelCount", recording.channelCount)
        .optional("note", recording.note)
        .optional("awaitsCompression", recording.awaitsCompression);
    if (!reader.isGood())
        return std::nullopt;
    recording.startedAt = startedAt.seconds;
    if (endedAt)
        recording.endedAt = endedAt->seconds;
    return recording;
}

std::optional<UUID> idOf(const Json& value) {
    return JSON::member<UUID>(value, "id");
}

/// Writes the fields of a recording over the object that `before` was read from. An unchanged field
/// keeps its written form, which may contain more than was read.
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
    writer.field("awaitsCompression", &RecordingMetadata::awaitsCompression);
}

/// Calls `found` with each stretch from a "{" to its "}", innermost first, except those with more
/// than `deepest` levels of nesting. Strings are skipped; they end at the end of the line at the
/// latest, so that a lost quotation mark affects one line only.
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
    Json array = JSON::parse(json);
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
        auto source = std::make_shared<const Json>(JSON::parse(json));
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

std::set<UUID> RecordingIndex::damagedEntries() const {
    std::set<UUID> damaged;
    for (const Element& element : elements_) {
        const auto id = element.recording ? std::nullopt : idOf(*element.source);
        if (id && !find(*id))
            damaged.insert(*id);
    }
    return damaged;
}

bool RecordingIndex::hasNamelessElements() const {
    return std::any_of(elements_.begin(), elements_.end(),
                       [](const Element& element) { return !idOf(*element.source); });
}

void RecordingIndex::put(const RecordingMetadata& recording) {
    auto same = std::find_if(elements_.begin(), elements_.end(), [&](const Element& element) {
        return element.recording && element.recording->id == recording.id;
    });
    if (same == elements_.end()) // perhaps its entry is damaged
        same = std::find_if(elements_.begin(), elements_.end(), [&](const Element& element) {
            return !element.recording && idOf(*element.source) == recording.id;
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

void RecordingIndex::removeIf(const std::function<bool(const RecordingMetadata&)>& matches) {
    std::erase_if(elements_, [&](const Element& element) {
        return element.recording && matches(*element.recording);
    });
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
    // All numbers here are finite, the parsed ones and those of `written`.
    return JSON::pretty(array).value() + "\n";
}

std::optional<std::string> RecordingIndex::encodedEntry(const UUID& id) const {
    for (const auto& element : elements_) {
        if (element.recording && element.recording->id == id)
            return JSON::pretty(*element.source).value() + "\n";
    }
    return std::nullopt;
}

} // namespace tessarune
