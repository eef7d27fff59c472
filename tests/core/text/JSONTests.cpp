#include "TessaruneCore/text/JSON.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessarune {
namespace {

TEST(JSONTests, SortsIndentsAndPrintsShortestNumbers) {
    const nlohmann::json value = {{"b", {2.0, 54010.197999954224}},
                                  {"a", {{"z", nlohmann::json::object()}, {"y", "é\n/\xFF"}}}};
    EXPECT_EQ(JSON::pretty(value), "{\n  \"a\": {\n    \"y\": \"é\\n/\uFFFD\",\n"
                                   "    \"z\": {}\n  },\n  \"b\": [\n    2.0,\n"
                                   "    54010.19799995422\n  ]\n}");
    EXPECT_EQ(JSON::pretty({1.0, std::numeric_limits<double>::infinity()}), std::nullopt);
}

TEST(JSONTests, RefusesDeepNestingHugeNumbersAndInvalidUTF8) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    EXPECT_FALSE(JSON::parse(nested(100)).is_discarded());
    EXPECT_TRUE(JSON::parse(nested(102)).is_discarded());
    EXPECT_TRUE(JSON::parse(nested(1'000'000)).is_discarded());
    EXPECT_TRUE(JSON::parse(std::string(1'000'000, '[')).is_discarded());
    const std::string quoted = R"("\"\\)" + std::string(200, '[') + '"';
    EXPECT_FALSE(JSON::parse(quoted).is_discarded());
    EXPECT_TRUE(JSON::parse("[1e999]").is_discarded());
    EXPECT_TRUE(JSON::parse("\"\xFF\"").is_discarded());
    EXPECT_EQ(JSON::parse(R"({"a":[1]})")["a"][0], 1);
}

TEST(JSONTests, ObjectsKeepTheOrderAndThePrecisionOfTheirFields) {
    const auto text =
        JSON::Object()
            .add("z", 0.1 + 0.2)
            .add("a", std::int64_t{-9223372036854775807})
            .add("absent", std::optional<double>())
            .add("text", std::string("q\"\\\n\t\x01\x1F/\u007Fé😀\xE4\xBD"))
            .add("none", std::vector<std::string>{})
            .add("texts", std::vector<std::string>{"", "b"})
            .add("objects", std::vector{JSON::Object().take(), JSON::Object().add("x", 1.0).take()})
            .line();
    EXPECT_EQ(text, "{\"z\":0.30000000000000004,\"a\":-9223372036854775807,"
                    "\"text\":\"q\\\"\\\\\\n\\t\\u0001\\u001f/\u007Fé😀\uFFFD\","
                    "\"none\":[],\"texts\":[\"\",\"b\"],\"objects\":[{},{\"x\":1.0}]}");
    EXPECT_EQ(JSON::Object().line(), "{}");
    EXPECT_FALSE(JSON::Object().add("x", 1e308 * 10).add("y", 1.0).line());
}

} // namespace
} // namespace tessarune
