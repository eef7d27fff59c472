#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/OverridingUserDefaults.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <fstream>
#include <regex>
#include <thread>

namespace tessarune {
namespace {

using Json = nlohmann::json;

class UserDefaultsTests : public ::testing::Test {
  protected:
    void write(const std::string& text) { testing::writeContents(file, text); }
    Json stored() { return Json::parse(files.read(file)); }

    testing::TemporaryFolder folder;
    PosixFileSystem files;
    std::filesystem::path file = folder / "settings.json";
};

TEST_F(UserDefaultsTests, ValuesOfEveryKindComeBackAndUnknownKeysStay) {
    write(R"({"fromTheFuture": {"nested": [1, 2]}, "other": null})");
    const auto link = folder / "link.json";
    std::filesystem::create_symlink("settings.json", link);
    JSONUserDefaults defaults(files, link);
    defaults.set("flag", true);
    defaults.set("count", std::int64_t{7});
    defaults.set("seconds", 0.6);
    defaults.set("name", std::string("简体"));

    JSONUserDefaults again(files, file);
    EXPECT_EQ(again.value("flag"), SettingValue(true));
    EXPECT_EQ(again.value("count"), SettingValue(std::int64_t{7}));
    EXPECT_EQ(again.value("seconds"), SettingValue(0.6));
    EXPECT_EQ(again.value("name"), SettingValue(std::string("简体")));
    EXPECT_FALSE(again.value("other"));
    EXPECT_EQ(stored()["fromTheFuture"]["nested"], Json::parse("[1, 2]"));
    EXPECT_TRUE(stored().contains("other"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(UserDefaultsTests, TwoFrontEndsDoNotUndoEachOther) {
    JSONUserDefaults one(files, file);
    JSONUserDefaults two(files, file);
    one.set("a", std::int64_t{1});
    two.set("b", std::int64_t{2});
    EXPECT_EQ(stored(), Json::parse(R"({"a": 1, "b": 2})"));

    // Simultaneous changes do not undo each other, either.
    constexpr int changes = 10;
    const auto write = [&](JSONUserDefaults& store, const char* name) {
        for (int i = 0; i < changes; ++i)
            store.set(name + std::to_string(i), true);
    };
    std::thread other([&] { write(two, "two "); });
    write(one, "one ");
    other.join();
    EXPECT_EQ(stored().size(), 2U + 2 * changes);
}

TEST_F(UserDefaultsTests, AFileThatIsNotUnderstoodIsNeverOverwritten) {
    for (const std::string& text :
         {std::string("{\"a\": 1"), std::string("[1]"), std::string("\xff\xfe")}) {
        write(text);
        JSONUserDefaults defaults(files, file);
        EXPECT_FALSE(defaults.problem().empty());
        EXPECT_TRUE(defaults.isUnreadable("a"));
        defaults.set("a", std::int64_t{2});
        EXPECT_EQ(defaults.value("a"), SettingValue(std::int64_t{2}))
            << "kept as long as the process runs";
        EXPECT_EQ(files.read(file), text);
        EXPECT_EQ(files.read(defaults.keepAside()), text);
        defaults.set("b", true);
        EXPECT_EQ(stored()["b"], true);
        write(text);
        JSONUserDefaults other(files, file);
        std::filesystem::remove(file);
        other.set("c", true);
        EXPECT_EQ(stored()["c"], true);
        EXPECT_EQ(other.problem(), "");
    }
    // A number beyond all bounds makes only its own key unreadable.
    const std::string huge = R"({"a": -1e400, "b": ["\"1e400", 2.5e999], "c": 5})";
    write(huge);
    JSONUserDefaults other(files, file);
    EXPECT_TRUE(other.isUnreadable("a"));
    other.set("c", std::int64_t{6});
    EXPECT_EQ(std::regex_replace(files.read(file), std::regex(R"(\s+)"), ""),
              R"({"a":-1e400,"b":["\"1e400",2.5e999],"c":6})");
    // A link may lead to a device or a pipe, which must not be moved.
    const auto pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink(pipe, folder / "link.json");
    JSONUserDefaults(files, folder / "link.json").keepAside();
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

/// A user who disabled recording and then damaged the file must not be recorded.
TEST_F(UserDefaultsTests, AnUnreadableSettingDisablesRecording) {
    const struct {
        const char* text;
        bool isUnreadable;
        bool records;
    } cases[] = {
        {R"({"recordWhileCaptioning": fal)", true, false},
        {R"({"recordWhileCaptioning": "no"})", true, false},
        {R"({"recordWhileCaptioning": 2})", true, false},
        {R"({"recordWhileCaptioning": null})", true, false},
        {R"({"recordWhileCaptioning": [false]})", true, false},
        {R"({"recordWhileCaptioning": false})", false, false},
        {R"({"recordWhileCaptioning": 1})", false, true},
        {R"({"other": []})", false, true},
    };
    for (const auto& c : cases) {
        write(c.text);
        JSONUserDefaults defaults(files, file);
        const AppSettings settings(defaults);
        EXPECT_EQ(settings.recordWhileCaptioning.isUnreadable(), c.isUnreadable) << c.text;
        EXPECT_EQ(*settings.recordWhileCaptioning, c.records) << c.text;
    }
}

TEST_F(UserDefaultsTests, WhatTheOtherFrontEndStoresArrivesAsAChange) {
    LoopHost host;
    JSONUserDefaults own(files, file);
    OverridingUserDefaults run(own);
    run.override("translationBackend", std::string("Off"));
    AppSettings settings(run);
    own.watch(host);
    int strayChanges = 0;
    for (AnySetting* setting : settings.all())
        if (auto* flag = dynamic_cast<Setting<bool>*>(setting))
            flag->published().onDidChange([&](bool) { ++strayChanges; });
    settings.translationBackend.published().onDidChange([&](const auto&) { ++strayChanges; });
    settings.translationTargetLanguage.published().onDidChange(
        [&](const std::string&) { host.quit(); });
    // A change that never arrives fails the test instead of hanging it.
    host.after(30, [&] { host.quit(1); });
    JSONUserDefaults other(files, file);
    other.set("translationBackend", std::string("other"));
    other.set("translationTargetLanguage", std::string("ja"));
    EXPECT_EQ(host.run(), 0);
    EXPECT_EQ(*settings.translationTargetLanguage, "ja");
    EXPECT_EQ(strayChanges, 0)
        << "an equal value, or one that this run overrides, is not reported as a change";
}

TEST_F(UserDefaultsTests, WithoutAWritableFolderTheValueIsKeptAndTheProblemIsReported) {
    std::ofstream(folder / "blocked") << "";
    JSONUserDefaults defaults(files, folder.path() / "blocked" / "settings.json");
    defaults.set("a", true);
    EXPECT_EQ(defaults.value("a"), SettingValue(true));
    EXPECT_FALSE(defaults.problem().empty());
}

TEST_F(UserDefaultsTests, WhatIsOverriddenForARunIsNeverStored) {
    write(R"({"kept": 1, "overridden": 1})");
    JSONUserDefaults defaults(files, file);
    OverridingUserDefaults run(defaults);
    run.override("overridden", std::int64_t{2});
    run.override("only", true);
    EXPECT_EQ(run.value("overridden"), SettingValue(std::int64_t{2}));
    EXPECT_EQ(run.value("kept"), SettingValue(std::int64_t{1}));
    run.set("overridden", std::int64_t{3});
    run.set("kept", std::int64_t{3});
    EXPECT_EQ(run.value("overridden"), SettingValue(std::int64_t{3}));
    EXPECT_EQ(run.value("only"), SettingValue(true));
    EXPECT_EQ(stored(), Json::parse(R"({"kept": 3, "overridden": 1})"));
}

} // namespace
} // namespace tessarune
