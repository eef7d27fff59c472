#include "Tessarune/shell/Setting.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <charconv>
#include <cmath>

namespace tessarune {

namespace {

std::optional<double> number(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<double> number(const SettingValue& stored) {
    if (const auto* integral = std::get_if<std::int64_t>(&stored))
        return static_cast<double>(*integral);
    if (const auto* real = std::get_if<double>(&stored); real && std::isfinite(*real))
        return *real;
    return std::nullopt;
}

std::optional<std::int64_t> integer(std::optional<double> value, std::int64_t lowest,
                                    std::int64_t highest) {
    if (!value || *value != std::floor(*value))
        return std::nullopt;
    if (*value < static_cast<double>(lowest) || *value > static_cast<double>(highest))
        return std::nullopt;
    return static_cast<std::int64_t>(*value);
}

} // namespace

SettingCodec<bool> boolCodec() {
    return {[](const SettingValue& stored) -> std::optional<bool> {
                if (const auto* flag = std::get_if<bool>(&stored))
                    return *flag;
                // Hand-written files may contain 0 and 1.
                const auto value = integer(number(stored), 0, 1);
                return value ? std::optional(*value == 1) : std::nullopt;
            },
            [](const bool& value) -> SettingValue { return value; },
            [](std::string_view text) -> std::optional<bool> {
                const std::string answer = Text::lowercased(text);
                if (answer == "true" || answer == "on" || answer == "yes" || answer == "1")
                    return true;
                if (answer == "false" || answer == "off" || answer == "no" || answer == "0")
                    return false;
                return std::nullopt;
            },
            [](const bool& value) { return std::string(value ? "true" : "false"); },
            [] { return localized("true or false"); },
            {}};
}

SettingCodec<std::int64_t> integerCodec(std::int64_t lowest, std::int64_t highest) {
    return {[=](const SettingValue& stored) { return integer(number(stored), lowest, highest); },
            [](const std::int64_t& value) -> SettingValue { return value; },
            [=](std::string_view text) { return integer(number(text), lowest, highest); },
            [](const std::int64_t& value) { return std::to_string(value); },
            [=] {
                return localized("a whole number from %lld to %lld",
                                 {std::to_string(lowest), std::to_string(highest)});
            },
            {}};
}

SettingCodec<double> secondsCodec(double lowest, double highest) {
    const auto within = [=](std::optional<double> value) -> std::optional<double> {
        return value && *value >= lowest && *value <= highest ? value : std::nullopt;
    };
    return {[=](const SettingValue& stored) { return within(number(stored)); },
            [](const double& value) -> SettingValue { return value; },
            [=](std::string_view text) { return within(number(text)); },
            [](const double& value) { return Text::shortest(value); },
            [=] {
                return localized("seconds from %@ to %@",
                                 {Text::shortest(lowest), Text::shortest(highest)});
            },
            {}};
}

SettingCodec<std::int64_t> colorCodec() {
    constexpr std::int64_t brightest = 0xFFFFFF;
    SettingCodec<std::int64_t> codec = integerCodec(0, brightest);
    codec.expected = [] { return localized("a colour as #RRGGBB"); };
    codec.print = [](const std::int64_t& value) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        std::string text = "#";
        for (int shift = 20; shift >= 0; shift -= 4)
            text += digits[static_cast<std::size_t>(value >> shift & 0xF)];
        return text;
    };
    codec.parse = [](std::string_view text) -> std::optional<std::int64_t> {
        if (text.size() != 7 || text[0] != '#')
            return std::nullopt;
        std::uint32_t value = 0; // unsigned: "#-00000" is no colour
        const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 7, value, 16);
        if (error != std::errc() || end != text.data() + 7)
            return std::nullopt;
        return value;
    };
    // Hand-written files may contain the text form.
    codec.read = [ofNumber = codec.read, parse = codec.parse](const SettingValue& stored) {
        const auto* const text = std::get_if<std::string>(&stored);
        return text ? parse(*text) : ofNumber(stored);
    };
    return codec;
}

SettingCodec<std::string> textCodec() {
    return {[](const SettingValue& stored) -> std::optional<std::string> {
                const auto* text = std::get_if<std::string>(&stored);
                return text ? std::optional(*text) : std::nullopt;
            },
            [](const std::string& value) -> SettingValue { return value; },
            [](std::string_view text) { return std::optional(std::string(text)); },
            [](const std::string& value) { return value; },
            [] { return localized("a text"); },
            {}};
}

} // namespace tessarune
