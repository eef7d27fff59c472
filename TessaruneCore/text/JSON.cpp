#include "TessaruneCore/text/JSON.h"

#include "TessaruneCore/text/ISO8601Date.h"
#include "TessaruneCore/text/Text.h"

#include <cmath>

namespace tessarune::JSON {

namespace {

template <typename Json>
std::string plain(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// `lineStart` is a line feed with the indentation, or empty for output on one line.
template <typename Json>
bool write(std::string& out, const Json& value, const std::string& lineStart) {
    if (value.is_number_float()) {
        const auto number = value.template get<double>();
        out += Text::shortest(number);
        return std::isfinite(number);
    }
    if (!value.is_structured() || value.empty()) {
        out += plain(value);
        return true;
    }
    const std::string innerStart = lineStart.empty() ? "" : lineStart + "  ";
    char separator = value.is_object() ? '{' : '[';
    for (auto item = value.begin(); item != value.end(); ++item) {
        out += separator;
        out += innerStart;
        if (value.is_object()) {
            out += plain(Json(item.key()));
            out += lineStart.empty() ? ":" : ": ";
        }
        if (!write(out, *item, innerStart))
            return false;
        separator = ',';
    }
    out += lineStart;
    out += value.is_object() ? '}' : ']';
    return true;
}

/// Used before parsing. A callback of the parser could check the depth, too, but with any callback
/// the library searches an array again after each object in it.
bool isTooDeep(std::string_view text) {
    int depth = 0;
    bool isQuoted = false;
    for (std::size_t at = 0; at < text.size() && depth <= maximumDepth; ++at) {
        const char sign = text[at];
        if (sign == '"')
            isQuoted = !isQuoted;
        else if (isQuoted)
            at += sign == '\\' ? 1 : 0;
        else if (sign == '[' || sign == '{')
            ++depth;
        else if (sign == ']' || sign == '}')
            --depth;
    }
    return depth > maximumDepth;
}

template <typename Json>
std::optional<std::string> written(const Json& value, const std::string& lineStart) {
    std::string out;
    return write(out, value, lineStart) ? std::optional(std::move(out)) : std::nullopt;
}

} // namespace

Value parse(std::string_view text) {
    return isTooDeep(text) ? Value(Value::value_t::discarded) : Value::parse(text, nullptr, false);
}

std::optional<std::string> line(const Value& value) {
    return written(value, "");
}

std::optional<std::string> line(const Ordered& value) {
    return written(value, "");
}

std::optional<std::string> pretty(const Value& value) {
    return written(value, "\n");
}

bool read(const Value& value, std::string& text) {
    if (!value.is_string())
        return false;
    text = value.get<std::string>();
    return true;
}

bool read(const Value& value, bool& flag) {
    if (!value.is_boolean())
        return false;
    flag = value.get<bool>();
    return true;
}

bool read(const Value& value, double& number) {
    if (!value.is_number())
        return false;
    number = value.get<double>();
    return true;
}

bool read(const Value& value, std::int64_t& integer) {
    constexpr double largestExactInteger = 9007199254740992.0; // 2^53
    if (value.is_number_integer()) {
        integer = value.get<std::int64_t>(); // negative for an unsigned number above the range
        return !value.is_number_unsigned() || integer >= 0;
    }
    double number = 0;
    if (!read(value, number) || std::trunc(number) != number ||
        std::abs(number) > largestExactInteger)
        return false;
    integer = static_cast<std::int64_t>(number);
    return true;
}

bool read(const Value& value, UUID& id) {
    const auto parsed = value.is_string() ? UUID::parse(value.get<std::string>()) : std::nullopt;
    id = parsed.value_or(UUID());
    return parsed.has_value();
}

bool read(const Value& value, Date& date) {
    const auto parsed =
        value.is_string() ? ISO8601Date::parse(value.get<std::string>()) : std::nullopt;
    date.seconds = parsed.value_or(0);
    return parsed.has_value();
}

} // namespace tessarune::JSON
