#pragma once

#include "Tessarune/platform/speech-engine/MoonshineABI.h"
#include "Tessarune/platform/speech-engine/OpenLine.h"
#include "Tessarune/speech/SpeechTranscriber.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Turns the growing lines of one stream into results: a volatile one whenever the shown part of
/// the open line has changed, final ones for the settled front of a long line and for the remainder
/// of a complete line (see `OpenLine`). No side effects; one thread at a time.
class TranscriptReader {
  public:
    explicit TranscriptReader(SpeechTranscriberOptions options) : options_(std::move(options)) {}

    /// Returns the results that are new since the last call, in order. `looksAgainSoon`: whether
    /// the next pass follows soon.
    std::vector<SpeechResult> read(const moonshine::Transcript& transcript, bool looksAgainSoon);

    /// Must be called when the engine's stream has been recreated. The new stream begins at `at`,
    /// in seconds of the session; the numbers and times of its lines begin at 0 again.
    void restarted(double at);

    /// Takes the shown, not yet final result of the open line as its final; `nullopt` if there is
    /// none.
    std::optional<SpeechResult> takeOpen();

    /// The number of complete lines of the stream.
    std::size_t completeLines() const { return completeLines_; }
    /// The end of the last complete line, or else the beginning of the stream, in seconds of the
    /// session.
    double completeThrough() const { return completeThrough_; }
    /// The start of the open line, in seconds of the session; `nullopt` if there is none.
    std::optional<double> openSince() const { return openSince_; }

  private:
    void beginLine(const moonshine::Line& line);
    void readOpen(const moonshine::Line& line, bool looksAgainSoon,
                  std::vector<SpeechResult>& results);
    void readComplete(const moonshine::Line& line, std::vector<SpeechResult>& results);
    SpeechResult result(std::vector<SpeechRun> runs, bool isFinal) const;
    std::vector<SpeechRun> runsOf(const moonshine::Line& line) const;
    std::vector<SpeechRun> timedRuns(const std::string& text, const moonshine::Line& line) const;
    std::vector<SpeechRun> evenRuns(const std::string& text, double start, double end) const;

    SpeechTranscriberOptions options_;
    double clockOffset_ = 0; ///< where the stream begins, in seconds of the session
    std::size_t completeLines_ = 0;
    double completeThrough_ = 0;
    std::optional<double> openSince_;
    bool isInLine_ = false;
    OpenLine line_;
    std::vector<SpeechRun> last_;      ///< the words of the last complete line
    std::optional<SpeechResult> open_; ///< what the open line shows after its last final
};

} // namespace tessarune
