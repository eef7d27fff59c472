#include "TessaruneCore/text/PrettyJSON.h"

#include "TessaruneCore/text/Text.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tessarune::PrettyJSON {

namespace {

using Json = nlohmann::json;

std::string compact(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool write(std::string& out, const Json& value, std::size_t depth) {
    if (value.is_number_float()) {
        const double number = value.get<double>();
        out += Text::shortest(number);
        return std::isfinite(number);
    }
    if (!value.is_structured() || value.empty()) {
        out += compact(value);
        return true;
    }
    const char* separator = "\n";
    out += value.is_object() ? '{' : '[';
    for (const auto& item : value.items()) {
        out += separator;
        out.append(2 * (depth + 1), ' ');
        if (value.is_object())
            out += compact(item.key()) + ": ";
        if (!write(out, item.value(), depth + 1))
            return false;
        separator = ",\n";
    }
    out += '\n';
    out.append(2 * depth, ' ');
    out += value.is_object() ? '}' : ']';
    return true;
}

} // namespace

std::optional<std::string> encode(const Json& value) {
    std::string out;
    if (!write(out, value, 0))
        return std::nullopt;
    return out;
}

} // namespace tessarune::PrettyJSON
