#include "TessaruneCore/text/PrettyJSON.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace tessarune {
namespace {

TEST(PrettyJSONTests, SortsIndentsAndPrintsShortestNumbers) {
    const nlohmann::json value = {{"b", {2.0, 54010.197999954224}},
                                  {"a", {{"z", nlohmann::json::object()}, {"y", "é\n/\xFF"}}}};
    EXPECT_EQ(PrettyJSON::encode(value), "{\n  \"a\": {\n    \"y\": \"é\\n/\uFFFD\",\n"
                                         "    \"z\": {}\n  },\n  \"b\": [\n    2.0,\n"
                                         "    54010.19799995422\n  ]\n}");
    EXPECT_EQ(PrettyJSON::encode({1.0, std::numeric_limits<double>::infinity()}), std::nullopt);
}

} // namespace
} // namespace tessarune
