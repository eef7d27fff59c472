#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace tessarune {

/// A failure of the program's own with the domain and the code under which logs know it. `what()`
/// is its localised description.
class DomainError : public std::runtime_error {
  public:
    DomainError(std::string domain, int code, const std::string& description)
        : std::runtime_error(description), domain_(std::move(domain)), code_(code) {}

    const std::string& domain() const { return domain_; }
    int code() const { return code_; }

  private:
    std::string domain_;
    int code_;
};

} // namespace tessarune
