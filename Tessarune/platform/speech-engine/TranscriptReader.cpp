#include "Tessarune/platform/speech-engine/TranscriptReader.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// A line that begins more than this many seconds before the end of the previous line may repeat
/// the previous line's last words, because the engine cuts long lines anywhere.
constexpr double overlapWithWords = 0.3;

/// The engine sometimes writes a comma twice.
std::string textOf(const char* bytes) {
    std::string text = bytes != nullptr ? bytes : "";
    const auto isRepeated = [](char a, char b) { return a == ',' && b == ','; };
    text.erase(std::unique(text.begin(), text.end(), isRepeated), text.end());
    return text;
}

} // namespace

std::vector<SpeechResult> TranscriptReader::read(const moonshine::Transcript& transcript,
                                                 bool looksAgainSoon) {
    std::vector<SpeechResult> results;
    openSince_.reset();
    for (std::size_t i = completeLines_; i < transcript.lineCount; ++i) {
        const moonshine::Line& line = transcript.lines[i];
        if (!std::exchange(isInLine_, true))
            beginLine(line);
        if (line.isComplete == 0) {
            openSince_ = clockOffset_ + line.start;
            readOpen(line, looksAgainSoon, results);
            break;
        }
        readComplete(line, results);
        completeLines_ = i + 1;
        completeThrough_ = std::max(completeThrough_, clockOffset_ + line.start + line.duration);
        isInLine_ = false;
    }
    return results;
}

void TranscriptReader::beginLine(const moonshine::Line& line) {
    const double begin = clockOffset_ + line.start;
    if (completeLines_ == 0 || begin >= completeThrough_)
        line_.clear();
    else if (begin >= completeThrough_ - overlapWithWords)
        line_.follow({}, completeThrough_);
    else
        line_.follow(std::exchange(last_, {}), completeThrough_);
}

void TranscriptReader::restarted(double at) {
    clockOffset_ = at;
    completeLines_ = 0;
    completeThrough_ = std::max(completeThrough_, at);
    openSince_.reset();
    isInLine_ = false;
    last_.clear();
    line_.clear();
    open_.reset();
}

void TranscriptReader::readOpen(const moonshine::Line& line, bool looksAgainSoon,
                                std::vector<SpeechResult>& results) {
    const bool givesVolatile = options_.reporting.contains(SpeechReportingOption::volatileResults);
    std::vector<SpeechRun> settled =
        line_.look(runsOf(line), clockOffset_ + line.start, looksAgainSoon);
    if (!settled.empty()) {
        // `AppleFinalReconciler` compares a final with the last volatile result. That result must
        // have the same words as the final, so it is reported first.
        if (givesVolatile)
            results.push_back(result(settled, false));
        results.push_back(result(std::move(settled), true));
        open_.reset();
    }
    SpeechResult now = result(line_.shown(), false);
    if (now.text() == (open_ ? open_->text() : std::string()))
        return;
    open_ = now;
    if (givesVolatile)
        results.push_back(std::move(now));
}

void TranscriptReader::readComplete(const moonshine::Line& line,
                                    std::vector<SpeechResult>& results) {
    last_ = runsOf(line);
    SpeechResult rest = result(line_.rest(last_), true);
    // An empty line must still withdraw its shown text.
    if (!rest.runs.empty() || open_)
        results.push_back(std::move(rest));
    line_.clear();
    open_.reset();
}

std::optional<SpeechResult> TranscriptReader::takeOpen() {
    std::optional<SpeechResult> taken = std::exchange(open_, std::nullopt);
    if (taken)
        taken->isFinal = true;
    return taken;
}

/// Makes a result of the runs. Inserts a blank before each word but the first.
SpeechResult TranscriptReader::result(std::vector<SpeechRun> runs, bool isFinal) const {
    for (SpeechRun& run : runs) {
        if (&run != &runs.front())
            run.text.insert(0, " ");
        if (!options_.attributes.contains(SpeechAttributeOption::audioTimeRange)) {
            run.audioStart.reset();
            run.audioEnd.reset();
        }
        if (!options_.attributes.contains(SpeechAttributeOption::transcriptionConfidence))
            run.confidence.reset();
    }
    SpeechResult result{std::move(runs), isFinal, {}};
    result.alternatives = {result.text()};
    return result;
}

/// The words of a line, one run for each.
std::vector<SpeechRun> TranscriptReader::runsOf(const moonshine::Line& line) const {
    const std::string text = textOf(line.text);
    std::vector<SpeechRun> runs = timedRuns(text, line);
    if (runs.empty())
        runs = evenRuns(text, clockOffset_ + line.start, clockOffset_ + line.start + line.duration);
    return runs;
}

/// Uses the engine's times of the words; empty if the engine's words differ from the text.
std::vector<SpeechRun> TranscriptReader::timedRuns(const std::string& text,
                                                   const moonshine::Line& line) const {
    std::vector<SpeechRun> runs;
    std::size_t next = 0;
    for (const std::string_view token : Text::splitOnWhiteSpace(text)) {
        SpeechRun run{std::string(token), std::nullopt, std::nullopt, std::nullopt};
        std::string read;
        while (read.size() < token.size() && next < line.wordCount) {
            const moonshine::Word& word = line.words[next++];
            read += Text::trimmed(textOf(word.text));
            run.audioStart = run.audioStart.value_or(clockOffset_ + word.start);
            run.audioEnd = clockOffset_ + word.end;
            run.confidence =
                std::min(run.confidence.value_or(1), static_cast<double>(word.confidence));
        }
        if (read != token)
            return {};
        runs.push_back(std::move(run));
    }
    return runs;
}

/// Divides the line's time among the words by their length.
std::vector<SpeechRun> TranscriptReader::evenRuns(const std::string& text, double start,
                                                  double end) const {
    const std::vector<std::string_view> tokens = Text::splitOnWhiteSpace(text);
    std::size_t all = 0;
    for (const std::string_view token : tokens)
        all += Text::length(token);
    std::vector<SpeechRun> runs;
    std::size_t before = 0;
    const auto at = [&](std::size_t characters) {
        return start + (end - start) * static_cast<double>(characters) / static_cast<double>(all);
    };
    for (const std::string_view token : tokens) {
        const std::size_t after = before + Text::length(token);
        runs.push_back({std::string(token), at(before), at(after), std::nullopt});
        before = after;
    }
    return runs;
}

} // namespace tessarune
