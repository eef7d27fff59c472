#include "Tessarune/ui/settings/ProfilesModel.h"

#include "Tessarune/ui/settings/SettingEntries.h"
#include "TessaruneCore/text/Localization.h"

#include <QClipboard>
#include <QGuiApplication>
#include <array>

namespace tessarune {

namespace {

struct TuningProfile {
    std::string_view title;
    std::string_view about;
    std::string_view done;
    void (AppSettings::*apply)();
};

constexpr std::array<TuningProfile, 4> tuningProfiles{
    {{localizationKey("内测推荐"),
      localizationKey("兼顾速度和准确。同时切换到离线翻译，译成简体中文。"),
      localizationKey("已应用内测推荐配置。"), &AppSettings::applyInternalBetaRecommendedDefaults},
     {localizationKey("低延迟"),
      localizationKey("字幕和译文来得最快，但之后可能会变化。同时切换到离线翻译，译成简体中文。"),
      localizationKey("已应用低延迟配置。"), &AppSettings::applyLowLatencyProfile},
     {localizationKey("稳翻译"),
      localizationKey("多等片刻，句子完整，译文更稳。同时切换到离线翻译，译成简体中文。"),
      localizationKey("已应用稳翻译配置。"), &AppSettings::applyStableTranslationProfile},
     {localizationKey("压力测试"),
      localizationKey("与“内测推荐”相同，但性能采样更密。同时切换到离线翻译，译成简体中文。"),
      localizationKey("已应用压力测试配置。"), &AppSettings::applyStressTestProfile}}};

QString tuningText(std::string_view key) {
    return QString::fromStdString(localized(key));
}

} // namespace

ProfilesModel::ProfilesModel(const SettingsWindowEnvironment& environment)
    : environment_(environment) {
    const auto announce = [this] { Q_EMIT changed(); };
    observations_.follow(environment_.session.isListening, announce);
    observations_.follow(environment_.session.sessionPhase, announce);
}

QVariantList ProfilesModel::profiles() const {
    QVariantList all;
    for (const TuningProfile& profile : tuningProfiles)
        all << QVariantMap{{"title", tuningText(profile.title)},
                           {"about", tuningText(profile.about)}};
    return all;
}

bool ProfilesModel::isLocked() const {
    const LiveSessionPhase phase = *environment_.session.sessionPhase;
    return *environment_.session.isListening ||
           (phase != LiveSessionPhase::idle && phase != LiveSessionPhase::failed);
}

QString ProfilesModel::message() const {
    return isLocked() ? tuningText("当前会议正在进行；停止后再切换策略。") : message_;
}

QVariantMap ProfilesModel::texts() const {
    return {{"profiles", tuningText("策略")},
            {"apply", tuningText("应用")},
            {"snapshot", tuningText("当前参数快照")},
            {"restore", tuningText("恢复高级默认值")}};
}

void ProfilesModel::tell(std::string_view key) {
    message_ = tuningText(key);
    Q_EMIT changed();
}

void ProfilesModel::apply(int profile) {
    if (isLocked() || profile < 0 || profile >= static_cast<int>(tuningProfiles.size()))
        return;
    const TuningProfile& wanted = tuningProfiles[static_cast<std::size_t>(profile)];
    (environment_.settings.*wanted.apply)();
    tell(wanted.done);
}

void ProfilesModel::restore() {
    if (isLocked())
        return;
    for (const SettingEntry& entry : settingEntries(environment_.settings)) {
        if (entry.pane == SettingsPane::advanced)
            entry.setting->restore();
    }
    tell("已恢复高级默认值。");
}

void ProfilesModel::copySnapshot() {
    QGuiApplication::clipboard()->setText(
        QString::fromStdString(environment_.settings.currentTuningSummaryText()));
    tell("已复制当前参数快照。");
}

} // namespace tessarune
