#pragma once

#include "Tessarune/shell/Setting.h"
#include "Tessarune/shell/SettingTypes.h"
#include "TessaruneCore/diagnostics/DiagnosticsLevel.h"

#include <cstdint>
#include <string>

namespace tessarune {

// How the settings of this program are stored, typed by a user and shown. Unless a comment says
// otherwise, a setting with an invalid stored value has its default.

/// The id of a recognition option. A user may type its locale instead, in upper or lower case and
/// with "-" or "_".
SettingCodec<std::string> recognitionOptionCodec();
/// The address of the mirror from which files are downloaded; "none" means no mirror. A stored text
/// is not checked.
SettingCodec<std::string> mirrorCodec();
/// The stored name of a translator. An unknown stored name is kept and reported, not replaced.
SettingCodec<std::string> backendCodec();
/// The ID of a target language. An unknown stored ID is kept; there is no model for it.
SettingCodec<std::string> targetLanguageCodec();
/// An invalid stored value switches recording off, because it may have meant "false".
SettingCodec<bool> recordingCodec();
SettingCodec<DiagnosticsLevel> levelCodec();
SettingCodec<AppleAnalyzerDiagnosticsMode> analyzerModeCodec();
SettingCodec<SubtitleLayoutMode> layoutCodec();
/// A modifier mask. Of a stored mask, bits that a shortcut cannot use are dropped; a user may not
/// type them.
SettingCodec<std::int64_t> modifiersCodec();
/// For a stored number that is not one of the choices, see `AudioInactivityMinutes::counted`.
SettingCodec<std::int64_t> inactivityCodec();
SettingCodec<std::int64_t> percentCodec();
SettingCodec<std::int64_t> pointsCodec();
SettingCodec<std::int64_t> millisecondsCodec();

} // namespace tessarune
