#include "TessaruneCore/recognition/ASREventRecord.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

namespace {

std::optional<std::vector<JSON::Ordered>>
objects(const std::optional<std::vector<ASRWordTiming>>& words) {
    if (!words)
        return std::nullopt;
    std::vector<JSON::Ordered> result;
    for (const auto& word : *words)
        result.push_back(JSON::Object()
                             .add("word", word.word)
                             .add("start", word.start)
                             .add("end", word.end)
                             .take());
    return result;
}

} // namespace

ASREventRecord::ASREventRecord(double time, ASREvent event) : t(time) {
    if (auto* partial = std::get_if<ASREvent::Partial>(&event.value)) {
        kind = "partial";
        text = std::move(partial->text);
        revision = partial->revision;
        timestamp = partial->timestamp;
    } else if (auto* final = std::get_if<ASREvent::Final>(&event.value)) {
        kind = "final";
        text = std::move(final->text);
        start = final->start;
        end = final->end;
        reason = name(final->reason);
        words = std::move(final->words);
    }
}

std::optional<ASREvent> ASREventRecord::asEvent() const {
    if (kind == "partial")
        return ASREvent::partial(text, revision.value_or(0), timestamp.value_or(t));
    if (kind == "final")
        return ASREvent::final(
            text, start.value_or(t), end.value_or(t),
            endpointReason(reason.value_or("")).value_or(EndpointReason::silence), words);
    return std::nullopt;
}

std::optional<std::string> ASREventRecord::line() const {
    return JSON::Object()
        .add("t", t)
        .add("kind", kind)
        .add("text", text)
        .add("revision", revision)
        .add("timestamp", timestamp)
        .add("start", start)
        .add("end", end)
        .add("reason", reason)
        .add("words", objects(words))
        .line();
}

} // namespace tessarune
