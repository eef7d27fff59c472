#pragma once

#include <cerrno>

namespace tessarune {

/// Repeats a system call for as long as signals interrupt it, and returns its result. Not for
/// `close`, which closes the file even if a signal interrupts it.
template <typename Call>
auto uninterrupted(const Call& call) {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

} // namespace tessarune
