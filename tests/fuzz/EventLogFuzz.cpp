// Reading any bytes as an event log: no crash, times in order, and what was read survives a round
// trip.
#include "TessaruneCore/recognition/ASREventLog.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <stdexcept>

namespace {

using namespace tessarune;

std::vector<ASREventRecord> read(std::string_view bytes) {
    static const testing::TemporaryFolder folder;
    const auto path = folder / "log.ndjson";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    try {
        return ASREventLog::read(path);
    } catch (const std::runtime_error&) {
        return {}; // not UTF-8
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const auto records = read(input.rest());
    for (std::size_t i = 0; i < records.size(); ++i) {
        fuzz::require(i == 0 || records[i - 1].t <= records[i].t, "times out of order");
        const auto line = records[i].line();
        fuzz::require(line.has_value(), "a record that was read but cannot be written");
        fuzz::require(line->find('\n') == std::string::npos, "a line feed inside a line");
        const auto again = ASREventRecord::fromLine(*line);
        fuzz::require(again && again->line() == line,
                      "a record that changes when written and read");
        if (const auto event = records[i].asEvent())
            fuzz::require(ASREventRecord(records[i].t, *event).asEvent() == event,
                          "an event that changes in a record");
    }
    return 0;
}
