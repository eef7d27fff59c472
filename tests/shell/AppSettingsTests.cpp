#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/shell/AppSettings.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>

namespace tessarune {
namespace {

class AppSettingsTests : public ::testing::Test {
  protected:
    void write(const std::string& text) { testing::writeContents(file, text); }
    std::string stored() { return files.read(file); }

    testing::TemporaryFolder folder;
    PosixFileSystem files;
    std::filesystem::path file = folder / "settings.json";
};

TEST_F(AppSettingsTests, StoredValuesThatAreInvalidReadAsTheDefaultAndStayInTheFile) {
    const std::string text = R"({"diagnosticsLevel": "deafening", "freezeStableSeconds": "soon",
        "bgOpacity": 170, "sourceFontSize": 24.5, "subtitleLayoutMode": 3, "trueFreeze": "maybe",
        "highlightColorHex": -1, "selectedRecognitionOptionID": "apple-analyzer-fr",
        "translationBackend": " "})";
    write(text);
    JSONUserDefaults defaults(files, file);
    AppSettings settings(defaults);
    for (const auto* setting : settings.all())
        EXPECT_EQ(setting->text(), setting->defaultText()) << setting->key();
    EXPECT_EQ(stored(), text);
}

TEST_F(AppSettingsTests, NumbersAndFlagsAreReadInTheFormsThatPeopleWrite) {
    write(R"({"freezeStableSeconds": 1, "trueFreeze": 0, "smoothPaceMS": 120.0,
        "audioInactivityAutoStopMinutes": -5, "diagnosticsLevel": "verbose",
        "shortcutPinModifiers": 1769738, "bgColorHex": "#0a0B0c",
        "selectedRecognitionOptionID": "apple-analyzer-en-gb"})");
    JSONUserDefaults defaults(files, file);
    AppSettings settings(defaults);
    EXPECT_EQ(*settings.freezeStableSeconds, 1.0);
    EXPECT_FALSE(*settings.trueFreeze);
    EXPECT_EQ(*settings.smoothPaceMS, 120);
    EXPECT_EQ(*settings.bgColorHex, 0x0A0B0C);
    EXPECT_EQ(*settings.audioInactivityAutoStopMinutes, 1) << "-5 is not among the choices";
    EXPECT_EQ(*settings.shortcutPin.modifiers, 0x1A0000)
        << "Caps Lock is ignored, and so is the side of a key";
    EXPECT_EQ(*settings.diagnosticsLevel, DiagnosticsLevel::verbose);
    EXPECT_EQ(*settings.selectedRecognitionOptionID, "apple-analyzer-en-gb");
}

TEST_F(AppSettingsTests, TextIsRefusedOrAcceptedAndStored) {
    const struct {
        const char* key;
        const char* text;
        bool isAccepted;
        const char* printed;
    } cases[] = {
        {"freezeStableSeconds", "0.35", true, "0.35"},
        {"freezeStableSeconds", "0.35s", false, "0.35"},
        {"freezeStableSeconds", "nan", false, "0.35"},
        {"trueFreeze", "Off", true, "false"},
        {"trueFreeze", "", false, "false"},
        {"bgColorHex", "#0a0B0c", true, "#0A0B0C"},
        {"bgColorHex", "#-12345", false, "#0A0B0C"},
        {"bgOpacity", "101", false, "100"},
        {"shortcutClearModifiers", "1e9", false, "1048576"},
        {"shortcutClearModifiers", "1703936", true, "1703936"},
        {"audioInactivityAutoStopMinutes", "30", false, "10"},
        {"audioInactivityAutoStopMinutes", "0", true, "0"},
        {"subtitleLayoutMode", "Lyrics", true, "lyrics"},
        {"subtitleLayoutMode", "sonnets", false, "lyrics"},
        {"selectedRecognitionOptionID", "klingon", false, "en-US"},
        {"selectedRecognitionOptionID", "EN_gb", true, "en-GB"},
        {"selectedRecognitionOptionID", "apple-analyzer-en-in", true, "en-IN"},
        {"translationTargetLanguage", "xx", false, "zh-Hans"},
        {"translationTargetLanguage", "pt", true, "pt-BR"},
        {"translationBackend", "Google", false, "offline"},
        {"translationBackend", "OFF", true, "off"},
        {"speechModel", "huge", false, "automatic"},
        {"speechModel", "Tiny-EN", true, "tiny-en"},
        {"modelMirror", "ftp://host", false, "none"},
        {"modelMirror", "https://", false, "none"},
        {"modelMirror", "https://host/a\033", false, "none"},
        {"modelMirror", "https://host/models", true, "https://host/models"},
        {"modelMirror", "None", true, "none"},
    };
    JSONUserDefaults defaults(files, file);
    AppSettings settings(defaults);
    settings.speechModelNames = [] { return std::vector<std::string>{"automatic", "tiny-en"}; };
    for (const auto& c : cases) {
        EXPECT_EQ(settings.find(c.key)->setText(c.text), c.isAccepted) << c.key << "=" << c.text;
        JSONUserDefaults again(files, file);
        AppSettings reread(again);
        EXPECT_EQ(reread.find(c.key)->text(), c.printed) << c.key;
    }
    EXPECT_EQ(settings.find("noSuchKey"), nullptr);
}

TEST_F(AppSettingsTests, KeysAreUniqueAndAssignmentsNotify) {
    JSONUserDefaults defaults(files, file);
    AppSettings settings(defaults);
    std::set<std::string_view> keys;
    for (const auto* setting : settings.all())
        keys.insert(setting->key());
    for (const auto* setting : settings.all()) {
        EXPECT_FALSE(setting->info().about.empty()) << setting->key();
        EXPECT_FALSE(setting->expected().empty()) << setting->key();
        for (const auto& choice : setting->choices())
            EXPECT_TRUE(setting->accepts(choice)) << setting->key() << "=" << choice;
        EXPECT_TRUE(setting->accepts(setting->text())) << setting->key();
    }
    EXPECT_EQ(keys.size(), settings.all().size());
    EXPECT_TRUE(keys.contains("shortcutToggleRecordKeyCode"));
    EXPECT_FALSE(isForWindowAlone(settings.historyPlaybackDiagnosticsEnabled.info().group));

    std::vector<double> seen;
    settings.freezeStableSeconds.published().onDidChange(
        [&](double value) { seen.push_back(value); });
    settings.applyLowLatencyProfile();
    settings.freezeStableSeconds.restore();
    EXPECT_EQ(seen, (std::vector<double>{0.35, 0.6}));
}

TEST_F(AppSettingsTests, TheRecommendedProfileKeepsThePaceAndShowsInTheSummary) {
    JSONUserDefaults defaults(files, file);
    AppSettings settings(defaults);
    settings.smoothPaceMS = 99;
    settings.selectedRecognitionOptionID = "apple-analyzer-en-in";
    settings.trueFreeze = false;
    settings.translationTargetLanguage = "fr-FR";
    settings.applyInternalBetaRecommendedDefaults();
    EXPECT_EQ(*settings.smoothPaceMS, 99);
    EXPECT_TRUE(*settings.trueFreeze);
    EXPECT_EQ(*settings.selectedRecognitionOptionID, "apple-analyzer-en");
    EXPECT_EQ(settings.currentTuningSummaryText(),
              "Tessarune tuning snapshot\nprofileDefault=内测推荐\ntranslationBackend=苹果\n"
              "translationTarget=zh-Hans\nsoftTranslationEnabled=true\nsentenceSegmentation=true\n"
              "freezeStableSeconds=0.60\nclauseLevelSegmentation=true\nsoftCaptionEnabled=true\n"
              "softCaptionStableSeconds=0.30\nsubtitleBottomPadding=100\n"
              "subtitleReviewAutoReturnSeconds=30\nappleAnalyzerEarlyFinalize=true\n"
              "appleAnalyzerHistoryRefinement=true\ndiagnosticsLevel=standard\n"
              "appleAnalyzerDiagnosticsMode=summary\ntranslationDrainTimeoutSeconds=4.0\n"
              "duplicateCommitWindowSeconds=4.0\nsmoothStreaming=true\nrecordWhileCaptioning=true\n"
              "recordLosslessAudio=false\nsessionDiagnosticsEnabled=true\n"
              "perfSampleIntervalSeconds=2.0");
}

} // namespace
} // namespace tessarune
