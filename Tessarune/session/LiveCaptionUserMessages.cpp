#include "Tessarune/session/LiveCaptionUserMessages.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

namespace tessarune::LiveCaptionUserMessages {

std::string idleTitle() {
    return localized("点击开始，或按空格");
}

std::string idleSubtitle() {
    return localized("接收 Mac 系统声音");
}

std::string checkingTitle() {
    return localized("正在检测系统声音");
}

std::string checkingSubtitle() {
    return localized("请播放一段声音");
}

std::string silentTitle() {
    return localized("没有听到系统声音");
}

std::vector<std::string> silentSubtitleLines() {
    return {localized("请播放声音，或检查系统音频权限")};
}

bool isSilentMessage(std::string_view text) {
    return Text::equal(text, silentTitle()) || Text::equal(text, localized("未检测到系统声音"));
}

std::string captureInterrupted() {
    return localized("声音已中断，正在等待恢复…");
}

std::string captureListeningTo(const std::string& deviceName) {
    return localized("正在接收：%@", {deviceName});
}

} // namespace tessarune::LiveCaptionUserMessages
