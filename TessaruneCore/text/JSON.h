#pragma once

#include "TessaruneCore/UUID.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The program's JSON operations, on top of a library. A value is used by one thread at a time.
/// Include this in sources only, because the library's header adds a second to the compilation of
/// each source.
namespace tessarune::JSON {

using Value = nlohmann::json;           ///< keys sorted
using Ordered = nlohmann::ordered_json; ///< keys in the order in which they were added

/// Deeper than any file of the program. A limit is needed because walking a value recurses once per
/// level.
inline constexpr int maximumDepth = 100;

/// Parses untrusted text. Returns a discarded value (`is_discarded()`) if the text is not JSON, is
/// nested too deeply or contains a number beyond the range of a double. Never throws.
Value parse(std::string_view text);

// Doubles are written in the shortest form that reads back the same (the library's own printer
// sometimes adds a digit). Invalid UTF-8 bytes become U+FFFD. `nullopt` if the value contains a
// number that is not finite, which JSON cannot express.

/// On one line.
std::optional<std::string> line(const Value& value);
std::optional<std::string> line(const Ordered& value);
/// Indented by two blanks per level, for files that people and comparison tools read.
std::optional<std::string> pretty(const Value& value);

/// Builds an object field by field and leaves out absent values.
class Object {
  public:
    template <typename T>
    Object& add(const char* key, const T& value) {
        json_.emplace(key, value);
        return *this;
    }
    template <typename T>
    Object& add(const char* key, const std::optional<T>& value) {
        return value ? add(key, *value) : *this;
    }

    Ordered take() { return std::move(json_); }
    std::optional<std::string> line() const { return JSON::line(json_); }

  private:
    Ordered json_ = Ordered::object();
};

/// A moment as ISO 8601 text.
struct Date {
    double seconds = 0; ///< since 1970
};

// Each of these reads a value of one type. Returns false if `value` has another type, or if its
// text is not the required identifier or date. An integer may be written as a double without a
// fraction, up to 2^53.
bool read(const Value& value, std::string& text);
bool read(const Value& value, bool& flag);
bool read(const Value& value, double& number);
bool read(const Value& value, std::int64_t& integer);
bool read(const Value& value, UUID& id);
bool read(const Value& value, Date& date);

/// One member of `object`; `nullopt` if `object` is not an object, or if the member is missing or
/// of another type.
template <typename T>
std::optional<T> member(const Value& object, const char* key) {
    T found{};
    const auto at = object.is_object() ? object.find(key) : object.end();
    return at != object.end() && read(*at, found) ? std::optional(std::move(found)) : std::nullopt;
}

/// The members of an object that is valid only as a whole. A null member counts as missing.
class Reader {
  public:
    explicit Reader(const Value& object) : object_(object), isGood_(object.is_object()) {}

    bool isGood() const { return isGood_; }

    /// Fails if the member is missing or of another type.
    template <typename T>
    Reader& required(const char* key, T& field) {
        const Value* const value = find(key);
        isGood_ = value && read(*value, field);
        return *this;
    }
    /// Fails if the member is of another type; leaves the field unchanged if it is missing.
    template <typename T>
    Reader& optional(const char* key, T& field) {
        if (const Value* const value = find(key))
            isGood_ = read(*value, field);
        return *this;
    }
    template <typename T>
    Reader& optional(const char* key, std::optional<T>& field) {
        if (const Value* const value = find(key))
            isGood_ = read(*value, field.emplace());
        return *this;
    }
    /// As above, for an array of objects; `readElement` takes a Reader and an element.
    template <typename Element, typename ReadElement>
    Reader& optional(const char* key, std::vector<Element>& fields, ReadElement readElement) {
        const Value* const value = find(key);
        if (!value)
            return *this;
        isGood_ = value->is_array();
        for (std::size_t i = 0; isGood_ && i < value->size(); ++i) {
            Reader reader((*value)[i]);
            readElement(reader, fields.emplace_back());
            isGood_ = reader.isGood();
        }
        return *this;
    }

  private:
    const Value* find(const char* key) const {
        if (!isGood_)
            return nullptr;
        const auto found = object_.find(key);
        return found == object_.end() || found->is_null() ? nullptr : &*found;
    }

    const Value& object_;
    bool isGood_;
};

} // namespace tessarune::JSON
