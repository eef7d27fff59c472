#include "TessaruneCore/text/TextColumns.h"
#include "tests/terminal/PrintedCaptions.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace tessarune {
namespace {

using Json = nlohmann::json;

class JSONOutputTests : public ::testing::Test, public testing::PrintedCaptions {
  protected:
    JSONOutputTests() {
        output = makeJSONOutput(
            out.file(), [this] { return host.now(); }, false);
    }
    std::vector<Json> take(const std::string& type) {
        std::vector<Json> found;
        std::istringstream text(out.take());
        for (std::string line; std::getline(text, line);) {
            EXPECT_EQ(Text::printable(line), line) << "no control characters";
            Json object = Json::parse(line);
            if (object["type"] == type)
                found.push_back(std::move(object));
        }
        return found;
    }
    std::string id(std::size_t row) const { return (*core.committedSegments)[row].id.text(); }
    std::string unit(std::size_t row) const {
        return (*core.committedSegments)[row].translationUnitID->text();
    }
};

TEST_F(JSONOutputTests, EachOutcomeOfAUnitIsOneObject) {
    commit("One,");
    commit("two.");
    EXPECT_EQ(take("committed").size(), 2u) << "a row does not wait for its translation";
    fail(0, 1, "went wrong");
    EXPECT_EQ(take("translation"), (std::vector<Json>{{{"type", "translation"},
                                                       {"t", 1000},
                                                       {"unit", unit(0)},
                                                       {"segments", {id(0), id(1)}},
                                                       {"target", "fr"},
                                                       {"error", "went wrong"}}}));
    update();
    EXPECT_TRUE(take("translation").empty());
    translate(0, 1, "Un, deux.");
    const auto again = take("translation");
    ASSERT_EQ(again.size(), 1u) << "a retry counts as a new unit";
    EXPECT_EQ(again[0]["text"], "Un, deux.");
    EXPECT_EQ(again[0]["unit"], unit(1));
    EXPECT_FALSE(again[0].contains("error"));
}

TEST_F(JSONOutputTests, PreviewsHaveTheirSourceAndAreWithdrawnByAnEmptyPreview) {
    const std::string withControls = "Je crois\u009b2J\u202e\177";
    preview = {withControls, "I think"};
    update();
    update();
    const auto shown = take("preview");
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0]["text"], withControls);
    EXPECT_EQ(shown[0]["source"], "I think");
    EXPECT_EQ(shown[0]["target"], "fr");
    preview = {};
    update();
    const auto gone = take("preview");
    ASSERT_EQ(gone.size(), 1u);
    EXPECT_EQ(gone[0]["text"], "");
}

} // namespace
} // namespace tessarune
