#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/host/Host.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace tessarune {

/// A snapshot of everything that an output can print.
struct CaptionPicture {
    const LiveCaptionDisplayFrame& frame;
    /// Has what a frame leaves out: failures, times and words of committed rows, and which live
    /// texts are complete sentences.
    LiveCaptions captions;
    /// The target language; empty: no translation.
    std::string target;
    /// Untranslated rows may still get a translation.
    bool awaitsTranslations = false;
};

/// A form of output: a screen that is rewritten, plain lines, or JSON. Main queue.
struct CaptionOutput {
    /// Prints what has changed since the previous call.
    std::function<void(const CaptionPicture&)> update;
    /// Prints a message to the user about the run itself, not a caption.
    std::function<void(std::string_view)> status;
    /// Prints the progress of a long operation in place of the previous progress.
    std::function<void(std::string_view)> progress;
    /// Draws the live text again, on a new line. Call after another program used the terminal.
    std::function<void()> redraw = [] {};
    /// Prints the last picture and leaves the screen in a clean state. The last call.
    std::function<void(const CaptionPicture&)> finish;
};

/// The size of a terminal in characters.
struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};
/// Returns the current size of the terminal.
using ScreenSizeSource = std::function<ScreenSize()>;

/// Whether the descriptor is a terminal that can rewrite lines in place.
bool isScreen(int descriptor);

/// The size of the terminal that `terminal` writes to.
ScreenSizeSource sizeOf(std::FILE* terminal);

/// Settled rows scroll up, each followed by its translation. Live text is shown dim below them and
/// rewritten in place. Up to eight settled rows that wait for their translation stay directly above
/// the live text instead of scrolling up. A translation that arrives after its row has scrolled up
/// is printed together with its source.
CaptionOutput makeScreenOutput(std::FILE* terminal, ScreenSizeSource size, bool quiet);

/// Prints settled rows, one per line, and translations as lines that begin with a tab; status lines
/// and failed translations go to `errors`. A row waits at most a second for the translation of the
/// previous row, so that each translation follows its row. If the translation does not arrive in
/// this second, the following rows are printed at once, until no translation is missing.
CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, Host& host, bool quiet);

/// Prints each change as a JSON object on a line of its own, flushed at once; see docs/terminal.md.
/// `now` returns the time for the objects.
CaptionOutput makeJSONOutput(std::FILE* out, std::function<double()> now, bool quiet);

/// The live text: leading sentences, soft captions and the rest of the tail, joined with blanks.
std::string liveText(const LiveCaptionDisplayFrame& frame);

/// Whether the frame has a preview of this text.
bool hasPreviewOf(const LiveCaptionDisplayFrame& frame, std::string_view sourceText);

/// Explains a failed translation and, if possible, tells a user of the terminal what to do.
std::string translationFailureText(std::string_view error, std::string_view target);

} // namespace tessarune
