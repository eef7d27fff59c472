#include "TessaruneCore/diagnostics/DiagnosticsLevel.h"

#include "TessaruneCore/text/Localization.h"

namespace tessarune {

std::string_view storageName(DiagnosticsLevel level) {
    switch (level) {
    case DiagnosticsLevel::off:
        return "off";
    case DiagnosticsLevel::core:
        return "core";
    case DiagnosticsLevel::standard:
        return "standard";
    case DiagnosticsLevel::verbose:
        return "verbose";
    case DiagnosticsLevel::trace:
        return "trace";
    }
    return {};
}

std::optional<DiagnosticsLevel> diagnosticsLevel(std::string_view name) {
    for (const auto level :
         {DiagnosticsLevel::off, DiagnosticsLevel::core, DiagnosticsLevel::standard,
          DiagnosticsLevel::verbose, DiagnosticsLevel::trace}) {
        if (name == storageName(level))
            return level;
    }
    return std::nullopt;
}

std::string detail(DiagnosticsLevel level) {
    switch (level) {
    case DiagnosticsLevel::off:
        return localized("出事只剩崩溃日志，几乎零开销。除非要绝对零负担，否则别选。");
    case DiagnosticsLevel::core:
        return localized("默认。极致性能：只记错误与关键启停，内存哨兵常驻，能定位大体问题。");
    case DiagnosticsLevel::standard:
        return localized("复现/长测推荐：额外写每会话诊断（性能、边界、仲裁、翻译摘要）。");
    case DiagnosticsLevel::verbose:
        return localized("全链路运行时事件 + debug 日志，开发排查用，会持续写盘。");
    case DiagnosticsLevel::trace:
        return localized("☢ 全部 + Apple 完整原始流。会卡、文件巨大，用完记得调回去。");
    }
    return {};
}

} // namespace tessarune
