#include "Tessarune/session/SessionStatus.h"

#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune {

std::string SessionStatus::text() const {
    switch (kind) {
    case Kind::none:
        return {};
    case Kind::idle:
        return LiveCaptionUserMessages::idleTitle();
    case Kind::checking:
        return LiveCaptionUserMessages::checkingTitle();
    case Kind::silent:
        return LiveCaptionUserMessages::silentTitle();
    case Kind::interrupted:
        return localized("声音已中断，正在等待恢复…");
    case Kind::listeningTo:
        return localized("正在收听：%@", {detail});
    case Kind::inactive:
        return localized("%lld 分钟未检测到声音，正在自动停止…", {std::to_string(minutes)});
    case Kind::saving:
        return localized("正在收尾保存…");
    case Kind::stillSaving:
        return localized("正在收尾保存，请稍候…");
    case Kind::compressing:
        return localized("正在压缩录音为 M4A…");
    case Kind::compressed:
        return localized("录音已压缩为 M4A");
    case Kind::compressionFailed:
        return localized("录音压缩失败，已保留 WAV");
    case Kind::transcriptNotSaved:
        return localized("转写保存失败，请检查磁盘空间。");
    case Kind::translation:
        return detail;
    }
    return {};
}

} // namespace tessarune
