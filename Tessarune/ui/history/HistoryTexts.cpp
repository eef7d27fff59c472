#include "Tessarune/ui/history/HistoryTexts.h"

#include "Tessarune/history/DurationTextFormatter.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune {

QString historyText(std::string_view key, const std::vector<std::string>& arguments) {
    return QString::fromStdString(arguments.empty() ? localized(key) : localized(key, arguments));
}

std::string titleOf(const HistoryItem& recording) {
    return recording.note.empty() ? recording.date + " " + recording.time : recording.note;
}

QString durationText(const HistoryItem& recording, const HistoryWindowEnvironment& environment) {
    if (!recording.live)
        return QString::fromStdString(recording.dur);
    if (!environment.liveDuration || environment.liveRecording() != recording.id)
        return {};
    return QString::fromStdString(DurationTextFormatter::compact(**environment.liveDuration));
}

QVariantMap historyTexts() {
    return {{"title", historyText("历史记录")},
            {"search", historyText("搜索历史记录")},
            {"source", historyText("原文")},
            {"bilingual", historyText("双语")},
            {"translation", historyText("译文")},
            {"language", historyText("语言")},
            {"transcript", historyText("文字")},
            {"note", historyText("添加备注")},
            {"copyBoth", historyText("复制原文和译文")},
            {"copySource", historyText("复制原文")},
            {"export", historyText("导出")},
            {"exportTo", historyText("导出到…")},
            {"exporting", historyText("正在导出…")},
            {"cancel", historyText("取消")},
            {"delete", historyText("删除")},
            {"undo", historyText("撤销")},
            {"play", historyText("播放")},
            {"pause", historyText("暂停")},
            {"place", historyText("播放位置")},
            {"rate", historyText("播放速度")},
            {"repeat", historyText("重复这一句")},
            {"playSentence", historyText("播放这一句")},
            {"previousSentence", historyText("上一句")},
            {"nextSentence", historyText("下一句")},
            {"dismiss", historyText("知道了")},
            // Imports
            {"import", historyText("导入声音或视频文件")},
            {"importShort", historyText("导入文件…")},
            {"importing", historyText("正在导入的文件")},
            {"drop", historyText("松开以导入")},
            {"cancelImport", historyText("取消导入")},
            // Refinement
            {"refine", historyText("重新转写")},
            {"refineHint", historyText("重新转写并翻译这条录音。完成之前保留现有的文字。")},
            {"refineWith", historyText("语音模型")},
            {"noModels", historyText("本机没有语音模型。可以在设置里下载。")},
            {"refineNow", historyText("开始")},
            // Words
            {"words", historyText("单词")},
            {"searchWords", historyText("搜索单词")},
            {"wordList", historyText("单词列表")},
            {"which", historyText("显示哪些单词")},
            {"known", historyText("认识")},
            {"favorite", historyText("收藏")},
            {"lookUp", historyText("查词典")},
            {"nextPlace", historyText("在文字里显示下一处")},
            {"hear", historyText("听发音")},
            {"stopSound", historyText("停止")},
            {"network", historyText("查词典和听发音会把这个词发送到所选网站。")},
            {"closeCard", historyText(localizationKey("Close"))},
            {"remove", historyText("从列表移除")},
            {"vocabulary", historyText("生词本")},
            {"dictionary", historyText("词典")},
            {"voice", historyText("发音")},
            // Usage
            {"usage", historyText("使用统计")},
            {"period", historyText(localizationKey("Period"))},
            {"chart", historyText("图表")}};
}

} // namespace tessarune
