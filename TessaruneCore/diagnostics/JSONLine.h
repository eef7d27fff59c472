#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Makes one JSON object without a line feed in it, its keys in the order in which they are added,
/// its doubles in full precision. Bytes that are no UTF-8 become U+FFFD each. Confined to one
/// thread.
///
///     JSONLine().add("t", 0.5).add("kind", "partial").text() == R"({"t":0.5,"kind":"partial"})"
class JSONLine {
  public:
    JSONLine& add(std::string_view key, double value);
    JSONLine& add(std::string_view key, std::int64_t value);
    JSONLine& add(std::string_view key, std::string_view value);
    JSONLine& add(std::string_view key, const char* value) {
        return add(key, std::string_view(value));
    }
    JSONLine& add(std::string_view key, const std::vector<std::string>& values);
    JSONLine& add(std::string_view key, const std::vector<JSONLine>& values);
    /// An absent value leaves the key out.
    template <typename Value>
    JSONLine& add(std::string_view key, const std::optional<Value>& value) {
        return value ? add(key, *value) : *this;
    }

    /// The object, or nothing if it holds a number that is none (JSON knows no infinity).
    std::optional<std::string> text() const;

  private:
    void addKey(std::string_view key);

    std::string body_; // all but the closing bracket
    bool isEncodable_ = true;
};

} // namespace tessarune
