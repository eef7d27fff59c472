#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include "Tessarune/ui/captions/ShortcutKeys.h"
#include "Tessarune/ui/controls/WindowKeys.h"
#include "TessaruneCore/text/Localization.h"

#include <QClipboard>
#include <QGuiApplication>

namespace tessarune {

CaptionCommandsModel::CaptionCommandsModel(const CaptionWindowEnvironment& environment,
                                           const CaptionToolbarModel& toolbar)
    : environment_(environment), toolbar_(toolbar) {
    reset(commands());
    const auto changed = [this] { announceChange(); };
    observations_.follow(environment_.session.hasVisibleSourceTextFlag, changed);
    connect(&toolbar_, &CaptionToolbarModel::sessionChanged, this, changed);
    connect(&toolbar_, &CaptionToolbarModel::settingsChanged, this, changed);
    connect(this, &CaptionCommandsModel::selectionChanged, this, changed);
    connect(&toolbar_, &CaptionToolbarModel::sourcesChanged, this, [this] { sourcesChanged(); });
    for (const CaptionCommand& command : rows()) {
        if (!command.shortcut)
            continue;
        observations_.add(command.shortcut->keyCode.onChange(changed));
        observations_.add(command.shortcut->modifiers.onChange(changed));
    }
}

std::vector<CaptionCommand> CaptionCommandsModel::commands() const {
    const AppSettings& settings = environment_.settings;
    const auto hasText = [this] { return *environment_.session.hasVisibleSourceTextFlag; };
    std::vector<CaptionCommand> all{
        {.text = [this] { return toolbar_.toggleText(); },
         .run = [this] { toolbar_.toggleByMenu(); },
         .shortcut = &settings.shortcutToggleRecord,
         .runByKeys = [this] { toolbar_.toggleByKey(); }},
        {.text = [this] { return toolbar_.layoutText(); },
         .run = [this] { toolbar_.cycleLayout(); },
         .shortcut = &settings.shortcutLyricsLayout,
         .isEnabled = [this] { return toolbar_.hasLayouts(); },
         .isFirstOfGroup = true},
        {.text = [this] { return toolbar_.swapText(); },
         .run = [this] { toolbar_.swapOrder(); },
         .shortcut = &settings.shortcutSwapLayout,
         .isEnabled = [this] { return toolbar_.hasLayouts(); },
         .isChecked = [this] { return toolbar_.swaps(); }},
        {.text = [this] { return toolbar_.keepOnTopText(); },
         .run = [this] { toolbar_.togglePin(); },
         .shortcut = &settings.shortcutPin,
         .isChecked = [this] { return toolbar_.keepsOnTop(); }},
        {.text =
             [this] {
                 return selection_.isEmpty() ? toolbar_.copyText()
                                             : QString::fromStdString(localized("复制所选文字"));
             },
         .run = [this] { copySelected(); },
         .shortcut = &settings.shortcutCopy,
         .isEnabled = [this, hasText] { return hasText() || !selection_.isEmpty(); },
         .isFirstOfGroup = true},
        {.text = [this] { return toolbar_.copyOriginalText(); },
         .run = [this] { copy(false); },
         .shortcut = &settings.shortcutCopyOriginal,
         .isEnabled = hasText},
        {.text = [this] { return toolbar_.clearText(); },
         .run = [this] { clear(); },
         .shortcut = &settings.shortcutClear,
         .isEnabled = hasText},
    };
    const QStringList sources = toolbar_.sourceNames();
    for (int i = 0; i < sources.size(); ++i) {
        all.push_back({.text = [name = sources[i]] { return name; },
                       .run = [this, i] { toolbar_.selectSource(i); },
                       .isChecked = [this, i] { return toolbar_.currentSource() == i; },
                       .isFirstOfGroup = i == 0,
                       .source = sources[i]});
    }
    const CaptionWindowEnvironment::Commands& commands = environment_.commands;
    all.push_back({.text = [this] { return toolbar_.historyText(); },
                   .run = commands.showHistory,
                   .shortcut = &settings.shortcutHistory,
                   .isFirstOfGroup = true});
    all.push_back({.text = [this] { return toolbar_.settingsText(); },
                   .run = [this] { toolbar_.showSettings(); },
                   .fixedKeys = WindowKeys::of("settings").keys.front()});
    all.push_back({.text = [] { return QString::fromStdString(localized("隐藏字幕窗口")); },
                   .run = commands.toggleWindow,
                   .shortcut = &settings.shortcutToggleWindow,
                   .isFirstOfGroup = true});
    all.push_back({.text = [] { return QString::fromStdString(localized("关于 Tessarune")); },
                   .run = [this] { environment_.commands.showSettings("about"); }});
    all.push_back({.text = [] { return QString::fromStdString(localized("退出 Tessarune")); },
                   .run = commands.quit,
                   .fixedKeys = WindowKeys::of("quit").keys.front()});
    return all;
}

void CaptionCommandsModel::sourcesChanged() {
    show(commands(), std::equal_to<>());
    announceChange(); // for the check marks, which `show` does not compare
}

void CaptionCommandsModel::announceChange() {
    Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

QKeySequence CaptionCommandsModel::keysAt(int row) const {
    return at(row)->shortcut ? keysOf(*at(row)->shortcut) : at(row)->fixedKeys;
}

/// Of several commands with the same keys, the first one that is enabled runs.
bool CaptionCommandsModel::hasKeysOfEarlier(int row) const {
    for (int earlier = 0; earlier < row; ++earlier) {
        const auto& isEnabled = at(earlier)->isEnabled;
        if (keysAt(earlier) == keysAt(row) && (!isEnabled || isEnabled()))
            return true;
    }
    return false;
}

QVariant CaptionCommandsModel::data(const QModelIndex& index, int role) const {
    const CaptionCommand* const command = at(index.row());
    if (!command)
        return {};
    switch (role) {
    case TextRole:
        return command->text();
    case KeysRole:
        return hasKeysOfEarlier(index.row())
                   ? QString()
                   : keysAt(index.row()).toString(QKeySequence::PortableText);
    case KeysTextRole:
        return keysAt(index.row()).toString(QKeySequence::NativeText);
    case EnabledRole:
        return !command->isEnabled || command->isEnabled();
    case CheckedRole:
        return command->isChecked && command->isChecked();
    case FirstOfGroupRole:
        return command->isFirstOfGroup;
    default:
        return {};
    }
}

QHash<int, QByteArray> CaptionCommandsModel::roleNames() const {
    return {{TextRole, "text"},         {KeysRole, "keys"},
            {KeysTextRole, "keysText"}, {EnabledRole, "available"},
            {CheckedRole, "checked"},   {FirstOfGroupRole, "firstOfGroup"}};
}

void CaptionCommandsModel::choose(int row) const {
    // Runs a copy, because the command may rebuild the list.
    if (const CaptionCommand* const command = at(row))
        std::function(command->run)();
}

void CaptionCommandsModel::press(int row) const {
    const CaptionCommand* const command = at(row);
    if (command && command->runByKeys)
        std::function(command->runByKeys)();
    else
        choose(row);
}

void CaptionCommandsModel::pressButton(const QString& name) const {
    if (name == "swap")
        toolbar_.swapOrder();
    else if (name == "layout")
        toolbar_.cycleLayout();
    else if (name == "copy" || name == "copyOriginal")
        copy(name == "copy");
    else if (name == "clear")
        clear();
    else if (name == "pin")
        toolbar_.togglePin();
    else if (name == "history")
        toolbar_.showHistory();
    else if (name == "settings")
        toolbar_.showSettings();
}

void CaptionCommandsModel::copySelected() const {
    if (selection_.isEmpty())
        copy(true);
    else
        QGuiApplication::clipboard()->setText(selection_);
}

void CaptionCommandsModel::copy(bool withTranslations) const {
    const TranscriptSnapshot shown = environment_.commands.visibleText();
    const std::string& text = withTranslations ? shown.bilingualText : shown.sourceText;
    if (!text.empty())
        QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

} // namespace tessarune
