#include "TessaruneCore/recognition/ASREventRecord.h"

#include <simdjson.h>

#include <cmath>
#include <utility>

namespace tessarune {

namespace {

namespace dom = simdjson::dom;

bool read(const dom::element& value, std::string& text) {
    std::string_view found;
    if (value.get(found) != simdjson::SUCCESS)
        return false;
    text = found;
    return true;
}

bool read(const dom::element& value, double& number) {
    return value.get(number) == simdjson::SUCCESS;
}

/// Also accepts an integer that is written with a point or an exponent.
bool read(const dom::element& value, std::int64_t& integer) {
    if (value.get(integer) == simdjson::SUCCESS)
        return true;
    double number = 0;
    if (!value.is_double() || !read(value, number) || number != std::trunc(number) ||
        number < -0x1p63 || number >= 0x1p63)
        return false;
    integer = static_cast<std::int64_t>(number);
    return true;
}

bool read(const dom::element& value, std::vector<ASRWordTiming>& words);

/// The last member with this key; `nullopt` if it is missing or null.
std::optional<dom::element> member(const dom::object& fields, std::string_view key) {
    std::optional<dom::element> last;
    for (const auto& field : fields) {
        if (field.key == key)
            last = field.value;
    }
    return last && last->is_null() ? std::nullopt : last;
}

template <typename Value>
bool readRequired(const dom::object& fields, std::string_view key, Value& value) {
    const auto found = member(fields, key);
    return found && read(*found, value);
}

template <typename Value>
bool readOptional(const dom::object& fields, std::string_view key, std::optional<Value>& value) {
    const auto found = member(fields, key);
    return !found || read(*found, value.emplace());
}

bool read(const dom::element& value, std::vector<ASRWordTiming>& words) {
    dom::array list;
    if (value.get(list) != simdjson::SUCCESS)
        return false;
    for (const dom::element entry : list) {
        dom::object fields;
        ASRWordTiming& word = words.emplace_back();
        if (entry.get(fields) != simdjson::SUCCESS || !readRequired(fields, "word", word.word) ||
            !readRequired(fields, "start", word.start) || !readRequired(fields, "end", word.end))
            return false;
    }
    return true;
}

} // namespace

std::optional<ASREventRecord> ASREventRecord::fromLine(std::string_view line) {
    // One per thread, so that its buffers are reused for the next line.
    thread_local dom::parser parser;
    dom::object fields;
    // A byte order mark is rejected here, because some versions of the library skip it.
    if (line.starts_with("\xEF\xBB\xBF") ||
        parser.parse(line.data(), line.size()).get(fields) != simdjson::SUCCESS)
        return std::nullopt;
    ASREventRecord record;
    const bool isGood =
        readRequired(fields, "t", record.t) && readRequired(fields, "kind", record.kind) &&
        readRequired(fields, "text", record.text) &&
        readOptional(fields, "revision", record.revision) &&
        readOptional(fields, "timestamp", record.timestamp) &&
        readOptional(fields, "start", record.start) && readOptional(fields, "end", record.end) &&
        readOptional(fields, "reason", record.reason) &&
        readOptional(fields, "words", record.words);
    return isGood ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace tessarune
