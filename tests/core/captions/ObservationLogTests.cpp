#include "TessaruneCore/captions/BoundaryObservationLog.h"
#include "TessaruneCore/captions/CorrectionObservationLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessarune {
using testing::contentsOf;
using testing::TemporaryFolder;
using testing::writeContents;

namespace {

TEST(ObservationLogTests, BoundaryLinesHaveEveryKeyInItsPlace) {
    const TemporaryFolder folder;
    SimulatedHost host;
    const auto path = folder / "boundary.ndjson";
    writeContents(path, "old");
    auto writer = BoundaryObservationLog::Writer::open(host, path);
    ASSERT_TRUE(writer);
    BoundaryObservation observation{
        BoundaryObservation::Phase::partial, 1760000000.25, "He said \"no\".\nOK", {}};
    observation.decision = {
        .softPieces = {"a,", "b;"},
        .hardPieces = {"h."},
        .leading = {"你好。"},
        .tail = "OK",
        .reasons = {BoundaryReason::localAgreement(), BoundaryReason::pause(0.8)}};
    writer->append(observation);
    writer->append(
        {BoundaryObservation::Phase::final, std::numeric_limits<double>::infinity(), "lost", {}});
    writer->append({BoundaryObservation::Phase::final, 2, "", {}});
    writer->close();
    EXPECT_EQ(contentsOf(path),
              R"({"t":1760000000.25,"phase":"partial","inputText":"He said \"no\".\nOK",)"
              R"("softPieces":["a,","b;"],"hardPieces":["h."],"leading":["你好。"],"tail":"OK",)"
              R"("reasons":["localAgreement","pause:0.8"]})"
              "\n"
              R"({"t":2.0,"phase":"final","inputText":"","softPieces":[],"hardPieces":[],)"
              R"("leading":[],"tail":"","reasons":[]})"
              "\n");
    EXPECT_FALSE(BoundaryObservationLog::Writer::open(host, folder.path()));
}

TEST(ObservationLogTests, CorrectionLinesHaveEveryKeyInItsPlace) {
    const TemporaryFolder folder;
    SimulatedHost host;
    const auto path = folder / "correction.ndjson";
    auto writer = CorrectionObservationLog::Writer::open(host, path);
    ASSERT_TRUE(writer);
    writer->append({0.1, "shown text", "final text", 1, 1, 1});
    writer->close();
    EXPECT_EQ(contentsOf(path), R"({"t":0.1,"shownText":"shown text","finalText":"final text",)"
                                R"("droppedWords":1,"addedWords":1,"commonWords":1})"
                                "\n");
    EXPECT_FALSE(CorrectionObservationLog::Writer::open(host, folder.path()));
}

} // namespace
} // namespace tessarune
