#pragma once

#include <nlohmann/json.hpp>

#include <optional>

namespace tessarune {

/// Fills a JSON object field by field, in the order of the calls. An absent value gives no key.
class RecordFields {
  public:
    explicit RecordFields(nlohmann::ordered_json& json) : json_(json) {
        json_ = nlohmann::ordered_json::object();
    }

    template <typename T>
    RecordFields& add(const char* key, const T& value) {
        json_.emplace(key, value);
        return *this;
    }

    template <typename T>
    RecordFields& add(const char* key, const std::optional<T>& value) {
        return value ? add(key, *value) : *this;
    }

  private:
    nlohmann::ordered_json& json_;
};

} // namespace tessarune
