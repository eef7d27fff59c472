#include "TessaruneCore/diagnostics/JSONLine.h"

#include "TessaruneCore/text/Text.h"

#include <cmath>

namespace tessarune {

namespace {

bool mustBeEscaped(char byte) {
    return byte == '"' || byte == '\\' || static_cast<unsigned char>(byte) < 0x20;
}

void appendEscaped(std::string& out, char byte) {
    static constexpr char digits[] = "0123456789abcdef";
    out += '\\';
    switch (byte) {
    case '"':
    case '\\':
        out += byte;
        break;
    case '\n':
        out += 'n';
        break;
    case '\r':
        out += 'r';
        break;
    case '\t':
        out += 't';
        break;
    default:
        out += "u00";
        out += digits[byte >> 4];
        out += digits[byte & 0x0F];
    }
}

void appendQuoted(std::string& out, std::string_view text) {
    if (!Text::isValidUTF8(text)) {
        std::string replaced;
        for (const char32_t codePoint : Text::codePoints(text))
            Text::append(replaced, codePoint);
        return appendQuoted(out, replaced);
    }
    out += '"';
    for (const char byte : text) {
        if (mustBeEscaped(byte))
            appendEscaped(out, byte);
        else
            out += byte;
    }
    out += '"';
}

/// `appendOne` appends one element.
template <typename Elements, typename AppendOne>
void appendArray(std::string& out, const Elements& elements, AppendOne appendOne) {
    out += '[';
    for (const auto& element : elements) {
        if (out.back() != '[')
            out += ',';
        appendOne(element);
    }
    out += ']';
}

} // namespace

void JSONLine::addKey(std::string_view key) {
    body_ += body_.empty() ? '{' : ',';
    appendQuoted(body_, key);
    body_ += ':';
}

JSONLine& JSONLine::add(std::string_view key, double value) {
    addKey(key);
    isEncodable_ = isEncodable_ && std::isfinite(value);
    body_ += Text::shortest(value);
    return *this;
}

JSONLine& JSONLine::add(std::string_view key, std::int64_t value) {
    addKey(key);
    body_ += std::to_string(value);
    return *this;
}

JSONLine& JSONLine::add(std::string_view key, std::string_view value) {
    addKey(key);
    appendQuoted(body_, value);
    return *this;
}

JSONLine& JSONLine::add(std::string_view key, const std::vector<std::string>& values) {
    addKey(key);
    appendArray(body_, values, [&](const std::string& value) { appendQuoted(body_, value); });
    return *this;
}

JSONLine& JSONLine::add(std::string_view key, const std::vector<JSONLine>& values) {
    addKey(key);
    appendArray(body_, values, [&](const JSONLine& value) {
        const auto object = value.text();
        isEncodable_ = isEncodable_ && object;
        body_ += object.value_or("null");
    });
    return *this;
}

std::optional<std::string> JSONLine::text() const {
    if (!isEncodable_)
        return std::nullopt;
    return (body_.empty() ? "{" : body_) + "}";
}

} // namespace tessarune
