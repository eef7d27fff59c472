#include "TessaruneCore/captions/BoundaryObservationRecord.h"
#include "TessaruneCore/captions/CorrectionObservationRecord.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessarune {
namespace {

TEST(ObservationRecordTests, LinesHaveEveryKeyInItsPlace) {
    BoundaryObservation observation{
        BoundaryObservation::Phase::partial, 1760000000.25, "He said \"no\".\nOK", {}};
    observation.decision = {
        .softPieces = {"a,", "b;"},
        .hardPieces = {"h."},
        .leading = {"你好。"},
        .tail = "OK",
        .reasons = {BoundaryReason::localAgreement(), BoundaryReason::pause(0.8)}};
    EXPECT_EQ(BoundaryObservationRecord(observation).line(),
              R"({"t":1760000000.25,"phase":"partial","inputText":"He said \"no\".\nOK",)"
              R"("softPieces":["a,","b;"],"hardPieces":["h."],"leading":["你好。"],"tail":"OK",)"
              R"("reasons":["localAgreement","pause:0.8"]})");
    observation = {
        BoundaryObservation::Phase::final, std::numeric_limits<double>::infinity(), "", {}};
    EXPECT_FALSE(BoundaryObservationRecord(observation).line());
    observation.t = 2;
    EXPECT_EQ(BoundaryObservationRecord(observation).line(),
              R"({"t":2.0,"phase":"final","inputText":"","softPieces":[],"hardPieces":[],)"
              R"("leading":[],"tail":"","reasons":[]})");
    EXPECT_EQ((CorrectionObservationRecord{{0.1, "shown text", "final text", 1, 1, 1}}.line()),
              R"({"t":0.1,"shownText":"shown text","finalText":"final text",)"
              R"("droppedWords":1,"addedWords":1,"commonWords":1})");
}

} // namespace
} // namespace tessarune
