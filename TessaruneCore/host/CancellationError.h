#pragma once

#include <exception>

namespace tessarune {

/// Thrown by a step that stops because its task was cancelled. Not a failure; never shown.
class CancellationError : public std::exception {
  public:
    const char* what() const noexcept override { return "cancelled"; }
};

} // namespace tessarune
