#pragma once

#include <exception>

namespace tessarune {

/// A step gave up because its task was asked to stop. It is no failure and is shown to nobody.
class CancellationError : public std::exception {
  public:
    const char* what() const noexcept override { return "cancelled"; }
};

} // namespace tessarune
