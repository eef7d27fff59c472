#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/host/Host.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace tessarune {

/// Everything there is to print at one moment.
struct CaptionPicture {
    const LiveCaptionDisplayFrame& frame;
    /// For data that a frame leaves out: failures, times and words of committed rows, and which
    /// live text is a complete sentence.
    LiveCaptions captions;
    /// The target language; empty: no translation.
    std::string target;
    /// Untranslated rows may still get a translation.
    bool awaitsTranslations = false;
};

/// The form of the output: a screen that is rewritten, plain lines, or JSON. Main queue.
struct CaptionOutput {
    /// Something has changed: prints the news.
    std::function<void(const CaptionPicture&)> update;
    /// A message to the user about the run itself; not a caption.
    std::function<void(std::string_view)> status;
    /// The progress of a long operation; replaces the previous one.
    std::function<void(std::string_view)> progress;
    /// Another program has written to the terminal: redraws live text on the next line.
    std::function<void()> beginAnew = [] {};
    /// The last call: leaves the screen in a clean state.
    std::function<void(const CaptionPicture&)> finish;
};

/// Returns the current size of the terminal.
struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};
using ScreenSizeSource = std::function<ScreenSize()>;

/// Whether the descriptor is a terminal that can rewrite lines in place.
bool isScreen(int descriptor);

/// The size of the terminal that `terminal` writes to.
ScreenSizeSource sizeOf(std::FILE* terminal);

/// Settled rows scroll up, each followed by its translation; live text stands dim below them and is
/// rewritten in place. Rows that wait for their translation stand between the two, up to eight of
/// them: a later translation is printed together with its source.
CaptionOutput makeScreenOutput(std::FILE* terminal, ScreenSizeSource size, bool quiet);

/// Prints settled rows, one per line, and translations as lines that begin with a tab; status lines
/// and failed translations go to `errors`. A row waits for the translation of the previous row, so
/// that the two stay together, but for a second at most, and not while translations are slower than
/// that.
CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, Host& host, bool quiet);

/// Prints one JSON object per change, one per line, flushed at once; see docs/terminal.md. `now`
/// dates them.
CaptionOutput makeJSONOutput(std::FILE* out, std::function<double()> now, bool quiet);

/// The text that is not settled yet: complete sentences, clauses and the open rest, joined with
/// blanks.
std::string liveText(const LiveCaptionDisplayFrame& frame);

/// Whether the frame has a preview of this text.
bool hasPreviewOf(const LiveCaptionDisplayFrame& frame, std::string_view sourceText);

/// The row's failed translation, in words that tell a user of the terminal what to do.
std::string translationFailureText(std::string_view error, std::string_view target);

} // namespace tessarune
