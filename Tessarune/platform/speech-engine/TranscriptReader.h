#pragma once

#include "Tessarune/platform/speech-engine/MoonshineABI.h"
#include "Tessarune/speech/SpeechTranscriber.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Turns the lines of one stream, read again and again as they grow, into results: a volatile one
/// when the open line has changed, a final one when a line has become complete. Each line gives one
/// final. Pure; one thread.
///
/// The engine guesses the end of a line anew at each look, and its last words are often others the
/// next time. Where the next look comes soon, only the words are given on which two looks in a row
/// agree, and they stay until two looks agree on other ones.
class TranscriptReader {
  public:
    explicit TranscriptReader(SpeechTranscriberOptions options) : options_(std::move(options)) {}

    /// The results that are new since the last call, in order.
    std::vector<SpeechResult> read(const moonshine::Transcript& transcript, bool looksAgainSoon);

    /// The engine's stream was made anew and begins at this time of the session; its lines count
    /// from 0 again.
    void restarted(double at);

    /// What was given of the open line, as if it were complete.
    std::optional<SpeechResult> takeOpen();

    /// How many lines of the stream are complete.
    std::size_t completeLines() const { return completeLines_; }
    /// Where the last complete line ends, in seconds of the session; the stream's begin before.
    double completeThrough() const { return completeThrough_; }
    /// Where the open line begins, in seconds of the session; nothing if there is none.
    std::optional<double> openSince() const { return openSince_; }

  private:
    std::optional<SpeechResult> readOpen(const moonshine::Line& line, bool looksAgainSoon);
    void forgetOpen();
    SpeechResult result(const moonshine::Line& line, bool isFinal) const;
    std::vector<SpeechRun> timedRuns(const std::string& text, const moonshine::Line& line) const;
    std::vector<SpeechRun> evenRuns(const std::string& text, double start, double end) const;

    SpeechTranscriberOptions options_;
    double clockOffset_ = 0;
    std::size_t completeLines_ = 0;
    double completeThrough_ = 0;
    std::optional<double> openSince_;
    std::vector<std::string> looked_;  ///< keys of all words of the open line at the last look
    std::vector<std::string> given_;   ///< of those that were given
    std::optional<SpeechResult> open_; ///< what was given, whether it was asked for or not
};

} // namespace tessarune
