#include "Tessarune/audio/SystemAudioCaptureError.h"

#include "TessaruneCore/text/Localization.h"

#include <string_view>

namespace tessarune {

namespace {

std::string_view text(SystemAudioCaptureError::Case which) {
    using enum SystemAudioCaptureError::Case;
    switch (which) {
    case failedToCreateTap:
        return "创建系统音频 Tap 失败：%@。";
    case failedToReadTapUID:
        return "读取系统音频 Tap 标识失败：%@。";
    case failedToReadTapFormat:
        return "读取系统音频格式失败：%@。";
    case failedToCreateAggregateDevice:
        return "创建临时音频设备失败：%@。";
    case failedToCreateIOProc:
        return "创建系统音频回调失败：%@。";
    case failedToStartDevice:
        return "启动系统音频接收失败：%@。";
    case unsupportedTapFormat:
        break;
    }
    return "系统音频格式暂不支持。";
}

} // namespace

SystemAudioCaptureError::SystemAudioCaptureError(Case which, std::int32_t status)
    : LocalizedError(localized(text(which), {describe(status)}),
                     "Tessarune.SystemAudioCaptureError", status) {}

std::string SystemAudioCaptureError::describe(std::int32_t status) {
    const auto bits = static_cast<std::uint32_t>(status);
    std::string code = "'";
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char byte = static_cast<char>((bits >> shift) & 0xff);
        if (byte < 0x20 || byte > 0x7e)
            return std::to_string(status);
        code += byte;
    }
    return code + "'";
}

} // namespace tessarune
