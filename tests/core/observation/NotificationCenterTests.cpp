#include "TessaruneCore/observation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <optional>

namespace tessarune {
namespace {

TEST(NotificationCenterTests, CallsTheHandlersOfANameInTheirOrder) {
    std::string calls; // for each call the handler and the index of the object's type
    auto center = std::make_optional<NotificationCenter>();
    const auto note = [&](char who) {
        return [&calls, who](const NotificationObject& object) {
            calls += who;
            calls += std::to_string(object.index());
        };
    };
    std::vector<NotificationCenter::Observation> kept;
    kept.push_back(center->observe("a", note('1')));
    kept.push_back(center->observe("aa", note('2')));
    kept.push_back(center->observe("a", note('3')));
    { const auto dropped = center->observe("a", note('4')); }
    center->post("a", UUID());
    center->post("aa", std::filesystem::path("/x"));
    center->post("b");
    EXPECT_EQ(calls, "1131"
                     "22");

    // A handler may end its own observation, add another and post.
    calls.clear();
    NotificationCenter::Observation once = center->observe("c", [&](const auto&) {
        once.end();
        kept.push_back(center->observe("c", note('5')));
        center->post("c");
    });
    center->post("c");
    center->post("c");
    EXPECT_EQ(calls, "5050");
    center.reset();
    kept.clear();
}

} // namespace
} // namespace tessarune
