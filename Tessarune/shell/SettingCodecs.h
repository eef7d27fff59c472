#pragma once

#include "Tessarune/shell/Setting.h"
#include "Tessarune/shell/SettingTypes.h"

#include <cstdint>
#include <string>

namespace tessarune {

// How the settings of this program are stored, typed by a user and shown. Where a comment is
// silent, what is not understood reads as the default.

/// People write the locale.
SettingCodec<std::string> recognitionOptionCodec();
/// Addresses that a download can begin with; "none" is the word for none.
SettingCodec<std::string> mirrorCodec();
/// Stored is the translator's name. One that is not known stays as it is: it is told, not replaced.
SettingCodec<std::string> backendCodec();
SettingCodec<std::string> targetLanguageCodec();
/// A stored value that is not understood may have meant no, so it switches recording off.
SettingCodec<bool> recordingCodec();
SettingCodec<DiagnosticsLevel> levelCodec();
SettingCodec<AppleAnalyzerDiagnosticsMode> analyzerModeCodec();
SettingCodec<SubtitleLayoutMode> layoutCodec();
SettingCodec<std::int64_t> modifiersCodec();
SettingCodec<std::int64_t> inactivityCodec();
SettingCodec<std::int64_t> percentCodec();
SettingCodec<std::int64_t> pointsCodec();
SettingCodec<std::int64_t> millisecondsCodec();

} // namespace tessarune
