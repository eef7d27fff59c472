#pragma once

#include <string>

namespace tessarune {

/// Messages of the program itself, which are shown over the captions until the user dismisses them
/// or they no longer apply.
struct CaptionNotice {
    std::string text; ///< one message per line; empty: there is none
    bool isTrouble = false;

    bool operator==(const CaptionNotice&) const = default;
};

} // namespace tessarune
