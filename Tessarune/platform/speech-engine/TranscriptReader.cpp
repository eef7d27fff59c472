#include "Tessarune/platform/speech-engine/TranscriptReader.h"

#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// The engine at times writes a comma twice.
std::string textOf(const char* bytes) {
    std::string text = bytes != nullptr ? bytes : "";
    const auto isRepeated = [](char a, char b) { return a == ',' && b == ','; };
    text.erase(std::unique(text.begin(), text.end(), isRepeated), text.end());
    return text;
}

/// A word of a text with the white space before it.
struct Token {
    std::string_view withSpace;
    std::string_view word;
};

/// The last token carries the white space after it too, so that all tokens joined are the text.
std::vector<Token> tokensOf(std::string_view text) {
    std::vector<Token> tokens;
    std::size_t from = 0;
    for (const std::string_view word : Text::splitOnWhiteSpace(text)) {
        const auto end = static_cast<std::size_t>(word.data() - text.data()) + word.size();
        tokens.push_back({text.substr(from, end - from), word});
        from = end;
    }
    if (!tokens.empty() && from < text.size()) {
        Token& last = tokens.back();
        last.withSpace = text.substr(from - last.withSpace.size());
    }
    return tokens;
}

} // namespace

std::vector<SpeechResult> TranscriptReader::read(const moonshine::Transcript& transcript,
                                                 bool looksAgainSoon) {
    std::vector<SpeechResult> results;
    openSince_.reset();
    for (std::size_t i = completeLines_; i < transcript.lineCount; ++i) {
        const moonshine::Line& line = transcript.lines[i];
        const std::string text = textOf(line.text);
        if (line.isComplete != 0) {
            // A line that comes to nothing must take back what was shown of it.
            if (!text.empty() || open_)
                results.push_back(result(line, true));
            forgetOpen();
            completeLines_ = i + 1;
            completeThrough_ =
                std::max(completeThrough_, clockOffset_ + line.start + line.duration);
            continue;
        }
        openSince_ = clockOffset_ + line.start;
        std::optional<SpeechResult> changed = readOpen(line, looksAgainSoon);
        if (changed && options_.reporting.contains(SpeechReportingOption::volatileResults))
            results.push_back(std::move(*changed));
        break;
    }
    return results;
}

void TranscriptReader::restarted(double at) {
    clockOffset_ = at;
    completeLines_ = 0;
    completeThrough_ = std::max(completeThrough_, at);
    openSince_.reset();
    forgetOpen();
}

void TranscriptReader::forgetOpen() {
    looked_.clear();
    given_.clear();
    open_.reset();
}

std::optional<SpeechResult> TranscriptReader::readOpen(const moonshine::Line& line,
                                                       bool looksAgainSoon) {
    SpeechResult now = result(line, false);
    std::vector<std::string> keys;
    keys.reserve(now.runs.size());
    for (const SpeechRun& run : now.runs)
        keys.push_back(SentenceStabilityKey::normalize(run.text));
    const std::vector<std::string> before = std::exchange(looked_, keys);
    if (looksAgainSoon) {
        const auto agreed = std::ranges::mismatch(keys, before).in1;
        keys.erase(agreed, keys.end());
        if (keys.size() < given_.size() && std::equal(keys.begin(), keys.end(), given_.begin()))
            return std::nullopt;
        now.runs.resize(keys.size());
        now.alternatives = {now.text()};
    }
    given_ = std::move(keys);
    if (now.text() == (open_ ? open_->text() : std::string()))
        return std::nullopt;
    open_ = now;
    return now;
}

std::optional<SpeechResult> TranscriptReader::takeOpen() {
    std::optional<SpeechResult> taken = std::exchange(open_, std::nullopt);
    if (taken)
        taken->isFinal = true;
    return taken;
}

SpeechResult TranscriptReader::result(const moonshine::Line& line, bool isFinal) const {
    SpeechResult result;
    const std::string text = textOf(line.text);
    result.isFinal = isFinal;
    result.alternatives = {text};
    result.runs = timedRuns(text, line);
    if (result.runs.empty())
        result.runs =
            evenRuns(text, clockOffset_ + line.start, clockOffset_ + line.start + line.duration);
    for (SpeechRun& run : result.runs) {
        if (!options_.attributes.contains(SpeechAttributeOption::audioTimeRange)) {
            run.audioStart.reset();
            run.audioEnd.reset();
        }
        if (!options_.attributes.contains(SpeechAttributeOption::transcriptionConfidence))
            run.confidence.reset();
    }
    return result;
}

/// One run a token with the times that the engine gives for its parts; nothing if the engine's
/// words are not the text's.
std::vector<SpeechRun> TranscriptReader::timedRuns(const std::string& text,
                                                   const moonshine::Line& line) const {
    std::vector<SpeechRun> runs;
    std::size_t next = 0;
    for (const Token& token : tokensOf(text)) {
        SpeechRun run{std::string(token.withSpace), std::nullopt, std::nullopt, std::nullopt};
        std::string read;
        while (read.size() < token.word.size() && next < line.wordCount) {
            const moonshine::Word& word = line.words[next++];
            read += Text::trimmed(textOf(word.text));
            run.audioStart = run.audioStart.value_or(clockOffset_ + word.start);
            run.audioEnd = clockOffset_ + word.end;
            run.confidence =
                std::min(run.confidence.value_or(1), static_cast<double>(word.confidence));
        }
        if (read != token.word)
            return {};
        runs.push_back(std::move(run));
    }
    return runs;
}

/// One run a token, the line's span divided among them by their length.
std::vector<SpeechRun> TranscriptReader::evenRuns(const std::string& text, double start,
                                                  double end) const {
    const std::vector<Token> tokens = tokensOf(text);
    std::size_t all = 0;
    for (const Token& token : tokens)
        all += Text::length(token.word);
    std::vector<SpeechRun> runs;
    std::size_t before = 0;
    const auto at = [&](std::size_t characters) {
        return start + (end - start) * static_cast<double>(characters) / static_cast<double>(all);
    };
    for (const Token& token : tokens) {
        const std::size_t after = before + Text::length(token.word);
        runs.push_back({std::string(token.withSpace), at(before), at(after), std::nullopt});
        before = after;
    }
    return runs;
}

} // namespace tessarune
