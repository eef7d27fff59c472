// Any bytes as the index of recordings: no crash, no loss in a rewrite, and what is salvaged from a
// damaged index can be written.
#include "Tessarune/history/RecordingIndex.h"
#include "tests/fuzz/Fuzz.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace {

using namespace tessarune;

void tryWhole(RecordingIndex index) {
    const auto before = nlohmann::json::parse(index.encoded());
    index.sort();
    auto after = nlohmann::json::parse(index.encoded());
    fuzz::require(std::is_permutation(before.begin(), before.end(), after.begin(), after.end()),
                  "an element that sorting changed");
    // Of several entries with one ID only the first is put back.
    std::set<UUID> seen;
    for (const auto& recording : index.recordings()) {
        if (seen.insert(recording.id).second)
            index.put(recording);
    }
    fuzz::require(nlohmann::json::parse(index.encoded()) == after,
                  "an entry that changes when put back as it was");

    RecordingMetadata added;
    added.startedAt = 1e15;
    index.put(added);
    index.sort();
    const auto again = RecordingIndex::decoded(index.encoded());
    fuzz::require(again && again->recordings().size() == index.recordings().size(),
                  "an index that loses entries when read again");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    if (auto index = RecordingIndex::decoded(input.rest()))
        tryWhole(std::move(*index));
    auto salvaged = RecordingIndex::salvaged(input.rest());
    fuzz::require(!salvaged.hasNamelessElements(), "a salvaged element that is no entry");
    tryWhole(std::move(salvaged));
    return 0;
}
