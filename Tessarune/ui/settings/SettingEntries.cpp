#include "Tessarune/ui/settings/SettingEntries.h"

#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune {

std::string_view name(SettingsPane pane) {
    switch (pane) {
    case SettingsPane::recognition:
        return "recognition";
    case SettingsPane::translation:
        return "translation";
    case SettingsPane::captions:
        return "captions";
    case SettingsPane::recording:
        return "recording";
    case SettingsPane::shortcuts:
        return "shortcuts";
    case SettingsPane::advanced:
        return "advanced";
    case SettingsPane::about:
        return "about";
    }
    return {};
}

std::string_view title(SettingsPane pane) {
    switch (pane) {
    case SettingsPane::recognition:
        return localizationKey("识别");
    case SettingsPane::translation:
        return localizationKey("翻译");
    case SettingsPane::captions:
        return localizationKey("字幕");
    case SettingsPane::recording:
        return localizationKey("录音");
    case SettingsPane::shortcuts:
        return localizationKey("快捷键");
    case SettingsPane::advanced:
        return localizationKey("高级");
    case SettingsPane::about:
        return localizationKey("关于");
    }
    return {};
}

namespace {

std::string recognitionName(std::string_view locale) {
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        if (option.localeIdentifier == locale)
            return option.flag + "  " + option.title;
    }
    return std::string(locale);
}

std::string backendName(std::string_view word) {
    return word == "off" ? localized("只显示原文") : localized("离线翻译");
}

std::string layoutName(std::string_view word) {
    return word == "lyrics" ? localized("原文与译文分开") : localized("双语对照");
}

std::string minutesName(std::string_view minutes) {
    return minutes == "0" ? localized("从不") : localized("%@ 分钟", {std::string(minutes)});
}

std::string levelName(std::string_view word) {
    const auto level = diagnosticsLevel(word);
    if (!level)
        return std::string(word);
    switch (*level) {
    case DiagnosticsLevel::off:
        return localized("不记录");
    case DiagnosticsLevel::core:
        return localized("核心");
    case DiagnosticsLevel::standard:
        return localized("标准");
    case DiagnosticsLevel::verbose:
        return localized("详细");
    case DiagnosticsLevel::trace:
        return localized("全部");
    }
    return {};
}

std::string analyzerModeName(std::string_view word) {
    if (word == name(AppleAnalyzerDiagnosticsMode::off))
        return localized("不记录");
    return word == name(AppleAnalyzerDiagnosticsMode::summary) ? localized("摘要")
                                                               : localized("完整");
}

constexpr std::string_view secondsFormat = localizationKey("%@ 秒");
constexpr std::string_view millisecondsFormat = localizationKey("%@ 毫秒");
constexpr std::string_view pointsFormat = localizationKey("%@ 磅");
constexpr std::string_view pixelsFormat = localizationKey("%@ 像素");
constexpr std::string_view percentFormat = "%@%";

/// The empty description of a setting whose title says enough.
std::string nothingMore() {
    return {};
}

void addRecognition(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::recognition;
    const auto models = localizationKey("语音模型");
    all.push_back({pane, models, localizationKey("使用的语音模型"), &s.speechModel,
                   SettingControl::elsewhere});
    all.push_back({.pane = pane,
                   .section = localizationKey("语言"),
                   .title = localizationKey("要识别的英语"),
                   .setting = &s.selectedRecognitionOptionID,
                   .control = SettingControl::choice,
                   .choiceName = recognitionName,
                   .about = nothingMore});
    all.push_back({pane, localizationKey("下载来源"), localizationKey("下载地址"), &s.modelMirror,
                   SettingControl::text});
}

void addTranslation(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::translation;
    const auto section = localizationKey("翻译方式");
    all.push_back({.pane = pane,
                   .section = section,
                   .title = localizationKey("译文"),
                   .setting = &s.translationBackend,
                   .control = SettingControl::choice,
                   .choiceName = backendName});
    all.push_back({pane, section, localizationKey("预览译文"), &s.softTranslationEnabled,
                   SettingControl::toggle});
    all.push_back({pane,
                   section,
                   localizationKey("结束时等待译文"),
                   &s.translationDrainTimeoutSeconds,
                   SettingControl::number,
                   {0, 30, 0.5, secondsFormat}});
    all.push_back({pane, localizationKey("目标语言"), localizationKey("翻译成"),
                   &s.translationTargetLanguage, SettingControl::elsewhere});
}

void addCaptions(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::captions;
    const auto layout = localizationKey("排版");
    all.push_back({.pane = pane,
                   .section = layout,
                   .title = localizationKey("排版模式"),
                   .setting = &s.subtitleLayoutMode,
                   .control = SettingControl::choice,
                   .choiceName = layoutName});
    all.push_back({pane, layout, localizationKey("译文在上"), &s.swapCaptionOrder});
    all.push_back({pane, layout, localizationKey("合并同一译文的行"), &s.mergeBilingualRows});
    all.push_back({pane,
                   layout,
                   localizationKey("下方留白"),
                   &s.subtitleBottomPadding,
                   SettingControl::number,
                   {0, 300, 10, pixelsFormat}});
    all.push_back({pane,
                   layout,
                   localizationKey("回看后自动返回"),
                   &s.subtitleReviewAutoReturnSeconds,
                   SettingControl::number,
                   {5, 60, 5, secondsFormat}});

    const auto looks = localizationKey("字体与颜色");
    const auto addSize = [&](std::string_view title, Setting<std::int64_t>& size) {
        all.push_back({.pane = pane,
                       .section = looks,
                       .title = title,
                       .setting = &size,
                       .control = SettingControl::number,
                       .scale = {12, 72, 1, pointsFormat},
                       .about = nothingMore});
    };
    const auto addColor = [&](std::string_view title, Setting<std::int64_t>& color) {
        all.push_back({.pane = pane,
                       .section = looks,
                       .title = title,
                       .setting = &color,
                       .control = SettingControl::color,
                       .about = nothingMore});
    };
    addSize(localizationKey("原文字号"), s.sourceFontSize);
    addSize(localizationKey("译文字号"), s.translationFontSize);
    addColor(localizationKey("原文颜色"), s.sourceFontColorHex);
    addColor(localizationKey("译文颜色"), s.translationFontColorHex);
    addColor(localizationKey("背景颜色"), s.bgColorHex);
    all.push_back({.pane = pane,
                   .section = looks,
                   .title = localizationKey("背景不透明度"),
                   .setting = &s.bgOpacity,
                   .control = SettingControl::number,
                   .scale = {0, 100, 5, percentFormat},
                   .about = nothingMore});

    const auto streaming = localizationKey("新文字的显示方式");
    all.push_back({pane, streaming, localizationKey("逐词显示"), &s.smoothStreaming});
    all.push_back({.pane = pane,
                   .section = streaming,
                   .title = localizationKey("逐词间隔"),
                   .setting = &s.smoothPaceMS,
                   .control = SettingControl::number,
                   .scale = {90, 500, 10, millisecondsFormat},
                   .needs = &s.smoothStreaming});
    all.push_back({pane, streaming, localizationKey("标出变化的词"), &s.highlightChanges});
    all.push_back({.pane = pane,
                   .section = streaming,
                   .title = localizationKey("标记颜色"),
                   .setting = &s.highlightColorHex,
                   .control = SettingControl::color,
                   .needs = &s.highlightChanges});

    const auto window = localizationKey("字幕窗口");
    all.push_back({pane, window, localizationKey("窗口置顶"), &s.keepOnTop});
    all.push_back({pane, window, localizationKey("登录时启动"), &s.launchAtLogin});
    all.push_back({pane, window, localizationKey("在任务栏中显示"), &s.showDockIcon});
    all.push_back(
        {pane, window, localizationKey("再次启动时开始或停止字幕"), &s.dockClickTogglesRecord});
    all.push_back({pane, window, localizationKey("让屏幕阅读器朗读字幕"), &s.announceCaptions});
    all.push_back(
        {pane, localizationKey("工具栏按钮"), localizationKey("紧凑的工具栏"), &s.compactToolbar});
    const auto addButton = [&](std::string_view title, Setting<bool>& shows) {
        all.push_back({.pane = pane,
                       .section = localizationKey("工具栏按钮"),
                       .title = title,
                       .setting = &shows,
                       .about = nothingMore});
    };
    addButton(localizationKey("切换排版模式"), s.showLayoutModeInSubtitleToolbar);
    addButton(localizationKey("原文/译文上下交换"), s.showSwapCaptionOrderInSubtitleToolbar);
    addButton(localizationKey("复制双语字幕"), s.showCopyBilingualInSubtitleToolbar);
    addButton(localizationKey("复制原文字幕"), s.showCopyOriginalInSubtitleToolbar);
    addButton(localizationKey("清空屏幕字幕"), s.showClearSubtitlesInSubtitleToolbar);
    addButton(localizationKey("窗口置顶"), s.showPinWindowInSubtitleToolbar);
    addButton(localizationKey("显示历史记录"), s.showHistoryInSubtitleToolbar);
    addButton(localizationKey("设置"), s.showSettingsInSubtitleToolbar);
}

void addRecording(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::recording;
    const auto sound = localizationKey("保存");
    all.push_back({pane, sound, localizationKey("保存录音和文字"), &s.recordWhileCaptioning});
    all.push_back({.pane = pane,
                   .section = sound,
                   .title = localizationKey("无损录音"),
                   .setting = &s.recordLosslessAudio,
                   .needs = &s.recordWhileCaptioning});
    all.push_back({.pane = pane,
                   .section = sound,
                   .title = localizationKey("结束后重新转写"),
                   .setting = &s.appleAnalyzerHistoryRefinement,
                   .needs = &s.recordWhileCaptioning});
    all.push_back({.pane = pane,
                   .section = localizationKey("自动停止"),
                   .title = localizationKey("无声多久后停止"),
                   .setting = &s.audioInactivityAutoStopMinutes,
                   .control = SettingControl::choice,
                   .choiceName = minutesName});
}

void addShortcuts(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::shortcuts;
    const auto section = localizationKey("字幕窗口");
    const auto add = [&](std::string_view title, ShortcutSetting& shortcut) {
        all.push_back({pane, section, title, &shortcut.keyCode, SettingControl::elsewhere});
    };
    add(localizationKey("启动录音转录"), s.shortcutToggleRecord);
    add(localizationKey("显示/隐藏字幕窗体"), s.shortcutToggleWindow);
    add(localizationKey("窗口置顶开关"), s.shortcutPin);
    add(localizationKey("切换排版模式"), s.shortcutLyricsLayout);
    add(localizationKey("原文/译文上下交换"), s.shortcutSwapLayout);
    add(localizationKey("复制双语字幕"), s.shortcutCopy);
    add(localizationKey("复制原文字幕"), s.shortcutCopyOriginal);
    add(localizationKey("清空屏幕字幕"), s.shortcutClear);
    add(localizationKey("显示历史记录"), s.shortcutHistory);
}

void addAdvanced(std::vector<SettingEntry>& all, AppSettings& s) {
    const auto pane = SettingsPane::advanced;
    const auto cutting = localizationKey("断句与定稿");
    all.push_back({pane, cutting, localizationKey("按句切分"), &s.sentenceSegmentation});
    all.push_back({.pane = pane,
                   .section = cutting,
                   .title = localizationKey("提前定稿"),
                   .setting = &s.trueFreeze,
                   .needs = &s.sentenceSegmentation});
    all.push_back({.pane = pane,
                   .section = cutting,
                   .title = localizationKey("句子定稿前的等待时间"),
                   .setting = &s.freezeStableSeconds,
                   .control = SettingControl::number,
                   .scale = {0.1, 3, 0.05, secondsFormat},
                   .needs = &s.trueFreeze});
    all.push_back({.pane = pane,
                   .section = cutting,
                   .title = localizationKey("显示完整分句"),
                   .setting = &s.clauseLevelSegmentation,
                   .needs = &s.sentenceSegmentation});
    all.push_back({pane, cutting, localizationKey("稳定的分句单独显示"), &s.softCaptionEnabled});
    all.push_back({.pane = pane,
                   .section = cutting,
                   .title = localizationKey("分句稳定前的等待时间"),
                   .setting = &s.softCaptionStableSeconds,
                   .control = SettingControl::number,
                   .scale = {0.1, 3, 0.05, secondsFormat},
                   .needs = &s.softCaptionEnabled});
    all.push_back({pane, cutting, localizationKey("提前断行"), &s.appleAnalyzerEarlyFinalize});
    all.push_back({pane,
                   cutting,
                   localizationKey("忽略此时间内的重复句子"),
                   &s.duplicateCommitWindowSeconds,
                   SettingControl::number,
                   {0, 15, 0.5, secondsFormat}});

    const auto diagnostics = localizationKey("诊断");
    all.push_back({.pane = pane,
                   .section = diagnostics,
                   .title = localizationKey("诊断级别"),
                   .setting = &s.diagnosticsLevel,
                   .control = SettingControl::choice,
                   .choiceName = levelName,
                   .about = [&s] { return detail(*s.diagnosticsLevel); }});
    all.push_back(
        {pane, diagnostics, localizationKey("保留每次会话的诊断"), &s.sessionDiagnosticsEnabled});
    all.push_back({.pane = pane,
                   .section = diagnostics,
                   .title = localizationKey("识别引擎的原始结果"),
                   .setting = &s.appleAnalyzerDiagnosticsMode,
                   .control = SettingControl::choice,
                   .choiceName = analyzerModeName});
    all.push_back({pane,
                   diagnostics,
                   localizationKey("性能采样间隔"),
                   &s.perfSampleIntervalSeconds,
                   SettingControl::number,
                   {0.5, 30, 0.5, secondsFormat}});
    all.push_back({pane, diagnostics, localizationKey("保留字幕窗口的截图"), &s.screenshotEnabled});
    all.push_back({.pane = pane,
                   .section = diagnostics,
                   .title = localizationKey("截图间隔"),
                   .setting = &s.screenshotIntervalMs,
                   .control = SettingControl::number,
                   .scale = {250, 10000, 250, millisecondsFormat},
                   .needs = &s.screenshotEnabled});
    all.push_back(
        {pane, diagnostics, localizationKey("记录播放过程"), &s.historyPlaybackDiagnosticsEnabled});
}

/// The form of a text that a search compares.
std::string folded(std::string_view text) {
    return Text::lowercased(text);
}

bool contains(std::string_view text, std::string_view query) {
    return folded(text).find(query) != std::string::npos;
}

} // namespace

std::string SettingEntry::aboutText() const {
    return about ? about() : localized(setting->info().about);
}

bool SettingEntry::matches(std::string_view query) const {
    const std::string wanted = folded(Text::trimmed(query));
    if (wanted.empty())
        return false;
    // Also finds a setting by its Chinese name or its key, whatever the displayed language is.
    for (const std::string& text : {localized(title), std::string(title), localized(section),
                                    aboutText(), std::string(setting->key())}) {
        if (contains(text, wanted))
            return true;
    }
    return choiceName && std::ranges::any_of(setting->choices(), [&](const std::string& choice) {
               return contains(choiceName(choice), wanted);
           });
}

std::vector<SettingEntry> settingEntries(AppSettings& settings) {
    std::vector<SettingEntry> all;
    addRecognition(all, settings);
    addTranslation(all, settings);
    addCaptions(all, settings);
    addRecording(all, settings);
    addShortcuts(all, settings);
    addAdvanced(all, settings);
    return all;
}

} // namespace tessarune
