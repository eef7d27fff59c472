#include "Tessarune/ui/settings/SettingsWindowModel.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <iterator>

namespace tessarune {

namespace {

QString shown(std::string_view key) {
    return QString::fromStdString(localized(key));
}

QString word(SettingsPane pane) {
    return QString::fromUtf8(name(pane).data(), static_cast<qsizetype>(name(pane).size()));
}

} // namespace

SettingsWindowModel::SettingsWindowModel(const SettingsWindowEnvironment& environment)
    : environment_(environment),
      entries_(settingEntries(environment.settings)),
      rows_(environment.host),
      found_(environment.host, SettingRowsModel::Headings::panes) {
    observations_.follow(environment_.settings.changesFromElsewhere,
                         [this] { Q_EMIT problemChanged(); });
    environment_.followFileProblem([this] { Q_EMIT problemChanged(); });
    observations_.add([this] { environment_.followFileProblem({}); });
    showPane();
}

QVariantList SettingsWindowModel::panes() const {
    QVariantList all;
    for (const SettingsPane pane : settingsPanes)
        all << QVariantMap{{"name", word(pane)}, {"title", shown(title(pane))}};
    return all;
}

QString SettingsWindowModel::pane() const {
    return word(pane_);
}

QString SettingsWindowModel::paneTitle() const {
    return shown(title(pane_));
}

void SettingsWindowModel::setPane(const QString& name) {
    const auto* const found =
        std::ranges::find_if(settingsPanes, [&](SettingsPane pane) { return word(pane) == name; });
    if (found == std::end(settingsPanes))
        return;
    setQuery({});
    if (pane_ == *found)
        return;
    pane_ = *found;
    showPane();
    Q_EMIT paneChanged();
}

void SettingsWindowModel::showPane() {
    std::vector<SettingEntry> shown;
    for (const SettingEntry& entry : entries_) {
        if (entry.pane == pane_ && entry.control != SettingControl::elsewhere)
            shown.push_back(entry);
    }
    rows_.show(std::move(shown));
}

void SettingsWindowModel::setQuery(const QString& query) {
    if (query_ == query)
        return;
    query_ = query;
    std::vector<SettingEntry> matching;
    std::ranges::copy_if(entries_, std::back_inserter(matching), [&](const SettingEntry& entry) {
        return entry.matches(query_.toStdString());
    });
    found_.show(std::move(matching));
    Q_EMIT queryChanged();
}

bool SettingsWindowModel::isSearching() const {
    return !query_.trimmed().isEmpty();
}

QString SettingsWindowModel::problem() const {
    const std::string problem = environment_.fileProblem();
    return problem.empty() ? QString()
                           : QString::fromStdString(localized("设置无法保存：%@", {problem}));
}

void SettingsWindowModel::renewFile() {
    environment_.renewFile();
    Q_EMIT problemChanged();
}

void SettingsWindowModel::restoreCaptions() {
    environment_.settings.resetSubtitleDefaults();
}

QVariantMap SettingsWindowModel::texts() const {
    return {{"title", shown("设置")},
            {"search", shown("搜索设置")},
            {"nothing", shown("没有找到")},
            {"models", shown("语音模型")},
            {"languages", shown("目标语言")},
            {"panes", shown("设置分类")},
            {"restore", shown("恢复默认值")},
            {"restoreCaptions", shown("恢复字幕默认值")},
            {"open", shown("打开")},
            {"renew", shown("重命名旧文件并新建")},
            {"color", shown("颜色，如 #RRGGBB")}};
}

} // namespace tessarune
