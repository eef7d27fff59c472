#include "Tessarune/session/LiveCaptionUserMessages.h"

#include "TessaruneCore/text/Localization.h"

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

} // namespace tessarune::LiveCaptionUserMessages
