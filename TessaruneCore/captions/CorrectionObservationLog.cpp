#include "TessaruneCore/captions/CorrectionObservationLog.h"

#include "TessaruneCore/text/JSON.h"

#include <utility>

namespace tessarune {

std::optional<std::string> CorrectionObservationRecord::line() const {
    return JSON::Object()
        .add("t", t)
        .add("shownText", shownText)
        .add("finalText", finalText)
        .add("droppedWords", droppedWords)
        .add("addedWords", addedWords)
        .add("commonWords", commonWords)
        .line();
}

namespace CorrectionObservationLog {

std::unique_ptr<Writer> Writer::open(Host& host, const std::filesystem::path& path) {
    auto lines = LineLogWriter::open(host, "Tessarune.CorrectionObservationLog.Writer", path);
    if (!lines)
        return nullptr;
    return std::unique_ptr<Writer>(new Writer(std::move(lines)));
}

void Writer::append(CorrectionObservation observation) {
    lines_->append(
        [record = CorrectionObservationRecord{std::move(observation)}] { return record.line(); });
}

} // namespace CorrectionObservationLog

} // namespace tessarune
