#include "TessaruneCore/recognition/ASREventRecordReader.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <type_traits>

namespace tessarune {

namespace {

bool isInteger(double number) {
    return number == std::trunc(number) && number >= -0x1p63 && number < 0x1p63;
}

} // namespace

template <typename SomeSlot, typename Value>
void ASREventRecordReader::assign(SomeSlot& slot, const Value& value) {
    constexpr bool isFloat = std::is_same_v<Value, double>;
    constexpr bool isInt = std::is_same_v<Value, std::int64_t>;
    if constexpr (std::is_null_pointer_v<Value>) {
        slot.state = SomeSlot::State::absent;
    } else if constexpr (std::is_same_v<SomeSlot, Number> && (isFloat || isInt)) {
        slot.set(static_cast<double>(value));
    } else if constexpr (std::is_same_v<SomeSlot, Integer> && isInt) {
        slot.set(value);
    } else if constexpr (std::is_same_v<SomeSlot, String> &&
                         std::is_same_v<Value, std::string_view>) {
        slot.set(std::string(value));
    } else {
        slot.state = SomeSlot::State::wrong;
        if constexpr (std::is_same_v<SomeSlot, Integer> && isFloat) {
            if (isInteger(value))
                slot.set(static_cast<std::int64_t>(value));
        }
    }
}

ASREventRecordReader::Target ASREventRecordReader::fieldOfRecord(std::string_view name) {
    if (name == "t")
        return &record_.t;
    if (name == "kind")
        return &record_.kind;
    if (name == "text")
        return &record_.text;
    if (name == "revision")
        return &record_.revision;
    if (name == "timestamp")
        return &record_.timestamp;
    if (name == "start")
        return &record_.start;
    if (name == "end")
        return &record_.end;
    if (name == "reason")
        return &record_.reason;
    if (name == "words")
        return &record_.words;
    return {};
}

ASREventRecordReader::Target ASREventRecordReader::fieldOfWord(std::string_view name) {
    if (name == "word")
        return &word_.word;
    if (name == "start")
        return &word_.start;
    if (name == "end")
        return &word_.end;
    return {};
}

bool ASREventRecordReader::key(std::string_view name) {
    if (isIn(Level::record))
        target_ = fieldOfRecord(name);
    else if (isIn(Level::word))
        target_ = fieldOfWord(name);
    return true;
}

template <typename Value>
bool ASREventRecordReader::scalar(const Value& value) {
    if (isIn(Level::outside))
        return false;
    if (isIn(Level::words)) {
        record_.words.state = Words::State::wrong;
    } else if (nestedDepth_ == 0) {
        std::visit(
            [&](auto target) {
                if constexpr (std::is_pointer_v<decltype(target)>)
                    assign(*target, value);
            },
            target_);
    }
    return true;
}

bool ASREventRecordReader::beginNested() {
    // Where a list or an object is not wanted, it is as wrong as a truth value.
    const bool goesOn = scalar(false);
    ++nestedDepth_;
    return goesOn;
}

bool ASREventRecordReader::start_object(std::size_t) {
    if (isIn(Level::outside)) {
        level_ = Level::record;
    } else if (isIn(Level::words)) {
        level_ = Level::word;
        word_ = {};
    } else {
        beginNested();
    }
    return true;
}

bool ASREventRecordReader::start_array(std::size_t) {
    if (!isIn(Level::record) || !std::holds_alternative<Words*>(target_))
        return beginNested();
    level_ = Level::words;
    record_.words.set({});
    return true;
}

bool ASREventRecordReader::end() {
    if (nestedDepth_ > 0) {
        --nestedDepth_;
    } else if (level_ == Level::word) {
        level_ = Level::words;
        endWord();
    } else {
        level_ = level_ == Level::words ? Level::record : Level::outside;
    }
    return true;
}

void ASREventRecordReader::endWord() {
    if (word_.word.isPresent() && word_.start.isPresent() && word_.end.isPresent())
        record_.words.value.push_back(
            {std::move(word_.word.value), word_.start.value, word_.end.value});
    else
        record_.words.state = Words::State::wrong;
}

std::optional<ASREventRecord> ASREventRecordReader::record() {
    auto& r = record_;
    const bool isWhole = r.t.isPresent() && r.kind.isPresent() && r.text.isPresent();
    const bool isWrong = r.revision.isWrong() || r.timestamp.isWrong() || r.start.isWrong() ||
                         r.end.isWrong() || r.reason.isWrong() || r.words.isWrong();
    if (!isWhole || isWrong)
        return std::nullopt;
    ASREventRecord result;
    result.t = r.t.value;
    result.kind = std::move(r.kind.value);
    result.text = std::move(r.text.value);
    result.revision = r.revision.take();
    result.timestamp = r.timestamp.take();
    result.start = r.start.take();
    result.end = r.end.take();
    result.reason = r.reason.take();
    result.words = r.words.take();
    return result;
}

std::optional<ASREventRecord> ASREventRecordReader::readByTheBook(std::string_view line) {
    // The library passes over a byte order mark, and takes a NUL for the end of the text.
    if (line.starts_with("\xEF\xBB\xBF") || line.find('\0') != std::string_view::npos)
        return std::nullopt;
    ASREventRecordReader reader;
    if (!nlohmann::json::sax_parse(line.begin(), line.end(), &reader))
        return std::nullopt;
    return reader.record();
}

} // namespace tessarune
