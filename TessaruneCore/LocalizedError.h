#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// A failure with localised texts for the user. `domain` and `code` identify it in logs.
class LocalizedError : public std::exception {
  public:
    LocalizedError(std::string errorDescription, std::string domain, std::int64_t code,
                   std::optional<std::string> failureReason = std::nullopt)
        : errorDescription_(std::move(errorDescription)),
          domain_(std::move(domain)),
          code_(code),
          failureReason_(std::move(failureReason)) {}

    const std::string& errorDescription() const { return errorDescription_; }
    const std::string& domain() const { return domain_; }
    std::int64_t code() const { return code_; }
    /// The cause, if more is known than the description says.
    const std::optional<std::string>& failureReason() const { return failureReason_; }

    const char* what() const noexcept override { return errorDescription_.c_str(); }

  private:
    std::string errorDescription_;
    std::string domain_;
    std::int64_t code_;
    std::optional<std::string> failureReason_;
};

/// The description of a caught `std::exception`; rethrows anything else.
inline std::string localizedDescription(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return error.what();
    }
}

} // namespace tessarune
