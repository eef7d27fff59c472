#include "Tessarune/ui/controls/WindowKeys.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>

namespace tessarune {

std::vector<WindowKeys> WindowKeys::all() {
    const auto standard = [](QKeySequence::StandardKey key) {
        return QKeySequence::keyBindings(key);
    };
    return {
        {"quit", {QKeySequence(Qt::CTRL | Qt::Key_Q)}, localizationKey("退出 Tessarune")},
        {"settings", {QKeySequence(Qt::CTRL | Qt::Key_Comma)}, localizationKey("设置")},
        {"menu",
         {QKeySequence(Qt::Key_Menu), QKeySequence(Qt::SHIFT | Qt::Key_F10)},
         localizationKey("打开菜单")},
        {"selectAll", standard(QKeySequence::SelectAll), localizationKey("全选")},
        {"find", standard(QKeySequence::Find), localizationKey("搜索历史记录")},
        {"open", standard(QKeySequence::Open), localizationKey("导入声音或视频文件")},
        {"save", standard(QKeySequence::Save), localizationKey("导出")},
        {"undo", standard(QKeySequence::Undo), localizationKey("撤销")},
        {"close", standard(QKeySequence::Close), localizationKey("Close")},
    };
}

WindowKeys WindowKeys::of(std::string_view name) {
    const std::vector<WindowKeys> commands = all();
    return *std::ranges::find(commands, name, &WindowKeys::name);
}

} // namespace tessarune
