#pragma once

#include "Terminal/ExitStatus.h"

#include <exception>
#include <stdexcept>
#include <string>

namespace tessarune {

/// Why a run ends early, with the exit status.
struct RunFailure : std::runtime_error {
    RunFailure(ExitStatus exitStatus, const std::string& text)
        : std::runtime_error(text), status(exitStatus) {}
    ExitStatus status;

    /// For a speech model that is missing, damaged or does not load. The text is `problem`
    /// and, below it, how to get a model.
    static RunFailure ofModel(const std::string& problem);
    /// Maps each failure of a session's start to an exit status that scripts can distinguish.
    static RunFailure ofStart(const std::exception_ptr& failure);
};

} // namespace tessarune
