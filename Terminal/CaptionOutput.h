#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace tessarune {

/// Where captions go: a screen that is rewritten, plain lines, or JSON. Main queue.
struct CaptionOutput {
    /// Something in the core has changed: prints what is new.
    std::function<void(const CaptionCore&)> update;
    /// A word to the user about the run itself; not a caption.
    std::function<void(std::string_view)> status;
    /// How far something that takes long has come; replaces the one before.
    std::function<void(std::string_view)> progress;
    /// The last call: leaves the screen in order.
    std::function<void(const CaptionCore&)> finish;
};

/// Settled rows scroll up; the live rest stands dim below them and is rewritten in place.
/// `terminal` must be a terminal.
CaptionOutput makeScreenOutput(std::FILE* terminal, bool quiet);

/// Settled rows, one a line; status lines go to `errors`.
CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, bool quiet);

/// One JSON object a change, one a line, flushed at once; see docs/terminal.md. `now` dates them.
CaptionOutput makeJSONOutput(std::FILE* out, std::function<double()> now, bool quiet);

/// The text that is not settled yet: complete sentences, clauses and the open rest, joined with
/// blanks.
std::string liveText(const CaptionCore& core);

} // namespace tessarune
