#include "Tessarune/ui/settings/ShortcutsModel.h"

#include "Tessarune/ui/captions/ShortcutKeys.h"
#include "Tessarune/ui/controls/WindowKeys.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

bool hasOtherKeys(const ShortcutSetting& shortcut) {
    return *shortcut.keyCode != shortcut.keyCode.defaultValue() ||
           *shortcut.modifiers != shortcut.modifiers.defaultValue();
}

bool isModifier(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
           key == Qt::Key_Meta || key == Qt::Key_AltGr || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R || key == Qt::Key_CapsLock || key == Qt::Key_NumLock;
}

} // namespace

ShortcutsModel::ShortcutsModel(AppSettings& settings)
    : settings_(settings),
      rows_{{localizationKey("启动录音转录"), settings.shortcutToggleRecord},
            {localizationKey("显示/隐藏字幕窗体"), settings.shortcutToggleWindow},
            {localizationKey("窗口置顶开关"), settings.shortcutPin},
            {localizationKey("切换排版模式"), settings.shortcutLyricsLayout},
            {localizationKey("原文/译文上下交换"), settings.shortcutSwapLayout},
            {localizationKey("复制双语字幕"), settings.shortcutCopy},
            {localizationKey("复制原文字幕"), settings.shortcutCopyOriginal},
            {localizationKey("清空屏幕字幕"), settings.shortcutClear},
            {localizationKey("显示历史记录"), settings.shortcutHistory}} {
    for (const Row& row : rows_) {
        observations_.add(row.shortcut.keyCode.onChange([this] { announceAll(); }));
        observations_.add(row.shortcut.modifiers.onChange([this] { announceAll(); }));
    }
}

/// Announces all rows, because a change of one shortcut may cause or solve a conflict of another.
void ShortcutsModel::announceAll() {
    Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

int ShortcutsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> ShortcutsModel::roleNames() const {
    return {{TitleRole, "title"},         {KeysTextRole, "keysText"}, {ConflictRole, "conflict"},
            {RecordingRole, "recording"}, {ProblemRole, "problem"},   {ChangedRole, "changed"}};
}

QString ShortcutsModel::conflictOf(int row) const {
    const QKeySequence keys = keysOf(rows_[static_cast<std::size_t>(row)].shortcut);
    if (keys.isEmpty())
        return {};
    const auto sentence = [](std::string_view title) {
        return QString::fromStdString(localized("与“%@”冲突", {localized(title)}));
    };
    for (int other = 0; other < rowCount(); ++other) {
        const Row& candidate = rows_[static_cast<std::size_t>(other)];
        if (other != row && keysOf(candidate.shortcut) == keys)
            return sentence(candidate.title);
    }
    // Default keys may be the same as keys of a window. This is intended: in every window, Ctrl+W
    // shows or hides the captions by default, instead of closing the window.
    if (!hasOtherKeys(rows_[static_cast<std::size_t>(row)].shortcut))
        return {};
    for (const WindowKeys& command : WindowKeys::all()) {
        if (command.keys.contains(keys))
            return sentence(command.title);
    }
    return {};
}

QVariant ShortcutsModel::data(const QModelIndex& index, int role) const {
    if (index.row() < 0 || index.row() >= rowCount())
        return {};
    const auto& [title, shortcut] = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case TitleRole:
        return QString::fromStdString(localized(title));
    case KeysTextRole:
        return keysOf(shortcut).toString(QKeySequence::NativeText);
    case ConflictRole:
        return conflictOf(index.row());
    case RecordingRole:
        return index.row() == recording_;
    case ProblemRole:
        if (index.row() == refused_)
            return QString::fromStdString(localized("这个键不能用作快捷键"));
        return shortcut.keyCode.isUnreadable() || shortcut.modifiers.isUnreadable()
                   ? QString::fromStdString(localized("设置文件里的值无效，现改用默认的快捷键"))
                   : QString();
    case ChangedRole:
        return hasOtherKeys(shortcut) || shortcut.keyCode.isUnreadable() ||
               shortcut.modifiers.isUnreadable();
    default:
        return {};
    }
}

QVariantMap ShortcutsModel::texts() const {
    const auto shown = [](std::string_view key) { return QString::fromStdString(localized(key)); };
    return {{"none", shown("未设置")},        {"press", shown("请按键…")},
            {"hint", shown("按 Esc 取消")},   {"clear", shown("停用")},
            {"restore", shown("恢复默认值")}, {"restoreAll", shown("恢复默认快捷键")}};
}

void ShortcutsModel::record(int row) {
    recording_ = row;
    refused_ = -1;
    announceAll();
}

void ShortcutsModel::cancel() {
    if (std::exchange(recording_, -1) >= 0)
        announceAll();
}

void ShortcutsModel::press(int key, int modifiers, quint32 scanCode) {
    if (recording_ < 0 || isModifier(key))
        return;
    const int row = std::exchange(recording_, -1);
    const auto held =
        Qt::KeyboardModifiers::fromInt(static_cast<Qt::KeyboardModifiers::Int>(modifiers));
    const auto keys = storedKeys(keyWithoutShift(key, held, scanCode), held);
    if (keys && key != Qt::Key_Escape) {
        ShortcutSetting& shortcut = rows_[static_cast<std::size_t>(row)].shortcut;
        shortcut.modifiers = keys->modifiers;
        shortcut.keyCode = keys->keyCode;
    }
    refused_ = keys ? -1 : row;
    announceAll();
}

void ShortcutsModel::clear(int row) {
    cancel();
    ShortcutSetting& shortcut = rows_[static_cast<std::size_t>(row)].shortcut;
    shortcut.keyCode = noKeyCode;
    shortcut.modifiers = 0;
}

void ShortcutsModel::restore(int row) {
    cancel();
    ShortcutSetting& shortcut = rows_[static_cast<std::size_t>(row)].shortcut;
    shortcut.keyCode.restore();
    shortcut.modifiers.restore();
}

void ShortcutsModel::restoreAll() {
    cancel();
    settings_.resetShortcutDefaults();
}

} // namespace tessarune
