#include "Tessarune/app/TessaruneStartupServices.h"
#include "tests/history/CatalogFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

/// The log opens before the repairs report to it. A program that does not hold the data folder
/// makes no repairs.
TEST(TessaruneStartupServicesTests, StartsTheLogThenTheRepairsOfItsOwnFolderThenTheRecogniser) {
    testing::Catalogued data;
    TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
    data.setIndex("no index");
    RecordingRepair repair(data.disk, data.catalog, data.logger);
    bool wasRebuilt = false;
    const auto preheat = [&] { wasRebuilt = !data.events("recording.catalog.rebuilt").empty(); };

    EXPECT_FALSE(
        TessaruneStartupServices::prepare({data.logger, {}, nullptr, {}, preheat}).rebuiltIndex);
    EXPECT_FALSE(wasRebuilt);
    EXPECT_TRUE(
        TessaruneStartupServices::prepare({data.logger, {}, &repair, {}, preheat}).rebuiltIndex);
    EXPECT_TRUE(wasRebuilt);
    EXPECT_EQ(data.events("app.bootstrap").size(), 2u);
    EXPECT_EQ(data.events("runtime.recognition").at(0)["engine"], "Apple SpeechAnalyzer");
}

} // namespace
} // namespace tessarune
