// Any bytes as a word timeline, as a bilingual transcript and as a session's journal.
#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/SessionJournalContent.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using namespace tessarune;

void tryTimeline(std::string_view text) {
    const auto timeline = HistoryWordTimeline::decoded(text);
    if (!timeline)
        return;
    fuzz::require(HistoryWordTimeline::decoded(timeline->encoded()) == timeline,
                  "a timeline that changes when written and read");
    const auto active = timeline->activeSentenceIndex(1);
    fuzz::require(!active || *active < timeline->sentenceStarts().size(),
                  "the index of a sentence that does not exist");
}

void tryBlocks(std::string_view text) {
    std::int64_t last = -1;
    for (const auto& block : HistoryTranscriptPayload::bilingualBlocks(text)) {
        fuzz::require(block.id > last && !block.source.empty(), "a block out of order or empty");
        last = block.id;
    }
}

void tryJournal(std::string_view text) {
    const auto journal = SessionJournalContent::decoded(text);
    std::string lines;
    for (const auto& row : journal.rows) {
        const auto words = journal.wordEvents.find(row.id);
        const auto line = SessionJournalContent::rowLine(
            row, words == journal.wordEvents.end() ? std::span<const WordEvent>()
                                                   : std::span<const WordEvent>(words->second));
        fuzz::require(line && line->find('\n') == std::string::npos, "a row that is no line");
        lines += *line + "\n";
    }
    const auto again = SessionJournalContent::decoded(lines);
    fuzz::require(again.rows == journal.rows && again.unreadableLines == 0,
                  "a row that changes when written and read");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    tryTimeline(input.rest());
    tryBlocks(input.rest());
    tryJournal(input.rest());
    return 0;
}
