#pragma once

#include "Terminal/ExitStatus.h"

#include <exception>
#include <stdexcept>
#include <string>

namespace tessarune {

/// Why a run ends early, with the status that the program ends with.
struct RunFailure : std::runtime_error {
    RunFailure(ExitStatus how, const std::string& text) : std::runtime_error(text), status(how) {}
    ExitStatus status;

    /// Gives each failure of a session's start the status under which scripts can tell it apart.
    static RunFailure ofStart(const std::exception_ptr& failure);
};

} // namespace tessarune
