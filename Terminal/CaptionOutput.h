#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/host/Host.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace tessarune {

/// What there is to print at one moment.
struct CaptionPicture {
    const LiveCaptionDisplayFrame& frame;
    /// What a frame leaves out: failures, times and words of committed rows, and which live text is
    /// a complete sentence.
    LiveCaptions captions;
    /// The language that rows are translated into; empty: they are not.
    std::string target;
    /// Rows that have no translation yet may still get one.
    bool awaitsTranslations = false;
};

/// Where captions go: a screen that is rewritten, plain lines, or JSON. Main queue.
struct CaptionOutput {
    /// Something has changed: prints what is new.
    std::function<void(const CaptionPicture&)> update;
    /// A word to the user about the run itself; not a caption.
    std::function<void(std::string_view)> status;
    /// How far something that takes long has come; replaces the one before.
    std::function<void(std::string_view)> progress;
    /// Another program has written to the terminal: live text is drawn again on the next line.
    std::function<void()> beginAnew = [] {};
    /// The last call: leaves the screen in order.
    std::function<void(const CaptionPicture&)> finish;
};

/// The room on a terminal, asked for at each use.
struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};
using ScreenSizeSource = std::function<ScreenSize()>;

/// Whether the descriptor is a terminal that can rewrite lines in place.
bool isScreen(int descriptor);

/// The size of the terminal that `terminal` writes to.
ScreenSizeSource sizeOf(std::FILE* terminal);

/// Settled rows scroll up, each with its translation under it; the live rest stands dim below them
/// and is rewritten in place. A row that waits for its translation stands between the two, up to
/// eight of them: what lands later is printed with its source said once more.
CaptionOutput makeScreenOutput(std::FILE* terminal, ScreenSizeSource size, bool quiet);

/// Settled rows, one a line, and translations as lines that begin with a tab; status lines and
/// failed translations go to `errors`. A row waits for the translation of the row before it, so
/// that the two stand together, but for a second at the most, and not at all while translations
/// are that slow.
CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, Host& host, bool quiet);

/// One JSON object a change, one a line, flushed at once; see docs/terminal.md. `now` dates them.
CaptionOutput makeJSONOutput(std::FILE* out, std::function<double()> now, bool quiet);

/// The text that is not settled yet: complete sentences, clauses and the open rest, joined with
/// blanks.
std::string liveText(const LiveCaptionDisplayFrame& frame);

/// Whether the frame has a preview of this text.
bool hasPreviewOf(const LiveCaptionDisplayFrame& frame, std::string_view sourceText);

/// The row's failed translation, as a user of the terminal can act on it.
std::string translationFailureText(std::string_view error, std::string_view target);

} // namespace tessarune
