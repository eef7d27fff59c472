#include "TessaruneCore/text/PrettyJSON.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace tessarune {
namespace {

TEST(PrettyJSONTests, SortsIndentsAndPrintsShortestNumbers) {
    const nlohmann::json value = {
        {"b", {1, 2.0, 54010.197999954224, nullptr, true}},
        {"a", {{"z", nlohmann::json::object()}, {"y", nlohmann::json::array()}}},
        {"c", "\"é\n/\xFF"},
    };
    EXPECT_EQ(PrettyJSON::encode(value), "{\n"
                                         "  \"a\": {\n"
                                         "    \"y\": [],\n"
                                         "    \"z\": {}\n"
                                         "  },\n"
                                         "  \"b\": [\n"
                                         "    1,\n"
                                         "    2.0,\n"
                                         "    54010.19799995422,\n"
                                         "    null,\n"
                                         "    true\n"
                                         "  ],\n"
                                         "  \"c\": \"\\\"é\\n/\uFFFD\"\n"
                                         "}");
    EXPECT_EQ(PrettyJSON::encode({1.0, std::numeric_limits<double>::infinity()}), std::nullopt);
}

} // namespace
} // namespace tessarune
