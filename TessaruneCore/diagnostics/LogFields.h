#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessarune {

/// A plain value of a log field. Writers omit doubles that are not finite.
using LogValue = std::variant<bool, std::int64_t, double, std::string, std::vector<std::string>>;

/// The named values of one event in insertion order.
class LogFields {
    using Fields = std::vector<std::pair<std::string, LogValue>>;

  public:
    LogFields() = default;
    LogFields(std::initializer_list<Fields::value_type> fields) : fields_(fields) {}

    LogFields& add(std::string name, LogValue value) {
        fields_.emplace_back(std::move(name), std::move(value));
        return *this;
    }
    LogFields& add(const LogFields& others) {
        fields_.insert(fields_.end(), others.begin(), others.end());
        return *this;
    }

    Fields::const_iterator begin() const { return fields_.begin(); }
    Fields::const_iterator end() const { return fields_.end(); }

  private:
    Fields fields_;
};

} // namespace tessarune
