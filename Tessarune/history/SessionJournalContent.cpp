#include "Tessarune/history/SessionJournalContent.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

namespace {

using Json = JSON::Value;
using Content = SessionJournalContent;

JSON::Ordered encoded(const WordEvent& word) {
    return JSON::Object()
        .add("word", word.word)
        .add("firstSeenAt", word.firstSeenAt)
        .add("revealedAt", word.revealedAt)
        .add("audioStart", word.audioStart)
        .add("audioEnd", word.audioEnd)
        .take();
}

std::optional<std::string> string(const Json& object, const char* key) {
    return JSON::member<std::string>(object, key);
}

std::optional<double> number(const Json& object, const char* key) {
    return JSON::member<double>(object, key);
}

std::optional<std::vector<WordEvent>> words(const Json& object) {
    const auto found = object.find("words");
    if (found == object.end() || !found->is_array())
        return std::nullopt;
    std::vector<WordEvent> events;
    for (const auto& word : *found) {
        if (!word.is_object()) // an empty event, so that the others keep their indexes
            events.emplace_back();
        else
            events.push_back({string(word, "word").value_or(""), number(word, "firstSeenAt"),
                              number(word, "revealedAt"), number(word, "audioStart"),
                              number(word, "audioEnd")});
    }
    return events;
}

/// Combines lines into the content of the journal.
struct Reader {
    Content content;
    std::unordered_map<UUID, std::size_t> places;

    bool read(const Json& line) {
        if (!line.is_object())
            return false;
        const auto kind = string(line, "kind");
        if (kind == "session")
            return readSession(line);
        return kind == "row" && readRow(line);
    }

    bool readSession(const Json& line) {
        content.recordingStartedAt = number(line, "startedAt");
        content.recognitionOptionID = string(line, "recognitionOptionID").value_or("");
        return true;
    }

    bool readRow(const Json& line) {
        const auto id = UUID::parse(string(line, "id").value_or(""));
        const auto source = string(line, "source");
        if (!id || !source)
            return false;
        const auto [place, isNew] = places.emplace(*id, content.rows.size());
        if (isNew)
            content.rows.emplace_back();
        CaptionSegment& row = content.rows[place->second];
        row.id = *id;
        row.sourceText = *source;
        row.translatedText = string(line, "translation");
        row.startedAt = number(line, "startedAt").value_or(0);
        row.endedAt = number(line, "endedAt");
        row.firstSeenAt = number(line, "firstSeenAt");
        row.state = CaptionSegmentState::final;
        if (auto events = words(line))
            content.wordEvents[*id] = std::move(*events);
        return true;
    }
};

} // namespace

std::optional<std::string> Content::sessionLine(double recordingStartedAt,
                                                std::string_view recognitionOptionID) {
    return JSON::Object()
        .add("kind", "session")
        .add("startedAt", recordingStartedAt)
        .add("recognitionOptionID", recognitionOptionID)
        .line();
}

std::optional<std::string> Content::rowLine(const CaptionSegment& row,
                                            std::span<const WordEvent> words) {
    JSON::Object line;
    line.add("kind", "row")
        .add("id", row.id.text())
        .add("source", row.sourceText)
        .add("translation", row.translatedText)
        .add("startedAt", row.startedAt)
        .add("endedAt", row.endedAt)
        .add("firstSeenAt", row.firstSeenAt);
    if (!words.empty()) {
        std::vector<JSON::Ordered> events;
        for (const auto& word : words)
            events.push_back(encoded(word));
        line.add("words", events);
    }
    return line.line();
}

SessionJournalContent Content::decoded(std::string_view text) {
    Reader reader;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty() && !reader.read(JSON::parse(line)))
            ++reader.content.unreadableLines;
    }
    return std::move(reader.content);
}

} // namespace tessarune
