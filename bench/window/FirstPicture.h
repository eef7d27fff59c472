#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// Starts a program on the display of $DISPLAY, on which nothing else runs, and waits until it has
/// painted something in the middle of a window: the root window has another colour. Ends it then.
struct FirstPicture {
    double seconds = 0;          ///< from the start of the process
    double processorSeconds = 0; ///< that it took of its own, however busy the computer is
    double megabytes = 0;        ///< that belong to the process then, shared ones in proportion

    /// Throws std::runtime_error if nothing is painted within some seconds.
    static FirstPicture of(const std::vector<std::string>& command);
};

} // namespace tessarune
