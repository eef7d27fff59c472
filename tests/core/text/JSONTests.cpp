#include "TessaruneCore/text/BoundedJSON.h"
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

TEST(BoundedJSONTests, RefusesWhatWouldOverflowTheStack) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    EXPECT_FALSE(BoundedJSON::parse(nested(100)).is_discarded());
    EXPECT_TRUE(BoundedJSON::parse(nested(102)).is_discarded());
    EXPECT_TRUE(BoundedJSON::parse(nested(1'000'000)).is_discarded());
    EXPECT_TRUE(BoundedJSON::parse(std::string(1'000'000, '[')).is_discarded());
    EXPECT_TRUE(BoundedJSON::parse("[1e999]").is_discarded());
    EXPECT_TRUE(BoundedJSON::parse("\"\xFF\"").is_discarded());
    EXPECT_EQ(BoundedJSON::parse(R"({"a":[1]})")["a"][0], 1);
}

} // namespace
} // namespace tessarune
