#include "Tessarune/shell/SettingCodecs.h"

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/AudioInactivityMinutes.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

// All integers up to this one are exact in a JSON number.
constexpr std::int64_t largestInteger = std::int64_t{1} << 53;

} // namespace

SettingCodec<std::string> recognitionOptionCodec() {
    SettingCodec<std::string> codec = textCodec();
    codec.read = [read = codec.read](const SettingValue& stored) -> std::optional<std::string> {
        auto id = read(stored);
        return id && ModelCatalog::recognitionOption(*id) ? std::move(id) : std::nullopt;
    };
    codec.parse = [](std::string_view text) -> std::optional<std::string> {
        std::string wanted = Text::lowercased(text);
        std::ranges::replace(wanted, '_', '-');
        for (const auto& option : ModelCatalog::recognitionOptions()) {
            if (wanted == option.id || wanted == Text::lowercased(option.localeIdentifier))
                return option.id;
        }
        return std::nullopt;
    };
    codec.print = [](const std::string& id) {
        const auto option = ModelCatalog::recognitionOption(id);
        return option ? option->localeIdentifier : id;
    };
    codec.choices = [] {
        std::vector<std::string> all;
        for (const auto& option : ModelCatalog::recognitionOptions())
            all.push_back(option.localeIdentifier);
        return all;
    };
    return codec;
}

SettingCodec<std::string> mirrorCodec() {
    SettingCodec<std::string> codec = textCodec();
    codec.parse = [](std::string_view text) -> std::optional<std::string> {
        if (Text::lowercased(text) == "none")
            return "";
        for (const std::string_view scheme : {"https://", "http://"}) {
            const bool isAddress = text.starts_with(scheme) && text.size() > scheme.size() &&
                                   text[scheme.size()] != '/';
            if (isAddress && std::ranges::all_of(text, [](char c) { return c > ' ' && c < 0x7F; }))
                return std::string(text);
        }
        return std::nullopt;
    };
    codec.print = [](const std::string& value) { return value.empty() ? "none" : value; };
    codec.expected = [] { return localized("an address (https://…), or none"); };
    return codec;
}

SettingCodec<std::string> backendCodec() {
    SettingCodec<std::string> codec = textCodec();
    // An unknown name is kept, because messages show it. A blank name would not be visible there.
    codec.read = [read = codec.read](const SettingValue& stored) -> std::optional<std::string> {
        auto name = read(stored);
        return name && !Text::trimmed(*name).empty() ? std::move(name) : std::nullopt;
    };
    codec.parse = [](std::string_view text) -> std::optional<std::string> {
        const std::string name = Text::lowercased(text);
        if (name == "offline" || name == "on" || TranslationSupport::isAppleBackend(text))
            return std::string(TranslationSupport::appleBackendName);
        if (name == "off" || name == "none" || TranslationSupport::isDisabledBackend(text))
            return std::string(TranslationSupport::disabledBackendName);
        return std::nullopt;
    };
    codec.print = [](const std::string& name) -> std::string {
        if (TranslationSupport::isAppleBackend(name))
            return "offline";
        return TranslationSupport::isDisabledBackend(name) ? "off" : name;
    };
    codec.choices = [] { return std::vector<std::string>{"offline", "off"}; };
    return codec;
}

SettingCodec<std::string> targetLanguageCodec() {
    SettingCodec<std::string> codec = textCodec();
    codec.parse = [](std::string_view text) { return TranslationSupport::targetLanguageID(text); };
    codec.choices = [] {
        std::vector<std::string> all;
        for (const auto& language : TranslationSupport::targetLanguages())
            all.push_back(language.id);
        return all;
    };
    return codec;
}

SettingCodec<bool> recordingCodec() {
    SettingCodec<bool> codec = boolCodec();
    codec.cautious = false;
    return codec;
}

SettingCodec<DiagnosticsLevel> levelCodec() {
    std::vector<std::pair<DiagnosticsLevel, std::string>> names;
    for (const auto level :
         {DiagnosticsLevel::off, DiagnosticsLevel::core, DiagnosticsLevel::standard,
          DiagnosticsLevel::verbose, DiagnosticsLevel::trace}) {
        names.emplace_back(level, storageName(level));
    }
    return wordCodec(std::move(names));
}

SettingCodec<AppleAnalyzerDiagnosticsMode> analyzerModeCodec() {
    using Mode = AppleAnalyzerDiagnosticsMode;
    return wordCodec<Mode>(
        {{Mode::off, "off"}, {Mode::summary, "summary"}, {Mode::fullRaw, "fullRaw"}});
}

SettingCodec<SubtitleLayoutMode> layoutCodec() {
    return wordCodec<SubtitleLayoutMode>(
        {{SubtitleLayoutMode::lyrics, "lyrics"},
         {SubtitleLayoutMode::bilingualCompare, "bilingualCompare"}});
}

SettingCodec<std::int64_t> modifiersCodec() {
    SettingCodec<std::int64_t> codec = integerCodec(0, 0xFFFFFFFF);
    codec.read = [read = codec.read](const SettingValue& stored) {
        const auto mask = read(stored);
        return mask ? std::optional(AppSettings::normalizeShortcutModifiers(*mask)) : std::nullopt;
    };
    codec.parse = [parse = codec.parse](std::string_view text) {
        const auto mask = parse(text);
        return mask && AppSettings::normalizeShortcutModifiers(*mask) == *mask ? mask
                                                                               : std::nullopt;
    };
    codec.expected = [] {
        return localized("0, or one or a sum of 131072 (Shift), 262144 (Super), 524288 (Alt) and "
                         "1048576 (Ctrl)");
    };
    return codec;
}

SettingCodec<std::int64_t> inactivityCodec() {
    SettingCodec<std::int64_t> codec = integerCodec(-largestInteger, largestInteger);
    codec.read = [read = codec.read](const SettingValue& stored) {
        const auto minutes = read(stored);
        return minutes ? std::optional(AudioInactivityMinutes::counted(*minutes)) : std::nullopt;
    };
    codec.parse = [parse = codec.parse](std::string_view text) {
        const auto minutes = parse(text);
        return minutes && AudioInactivityMinutes::counted(*minutes) == *minutes ? minutes
                                                                                : std::nullopt;
    };
    codec.choices = [] {
        std::vector<std::string> all;
        all.reserve(std::size(AudioInactivityMinutes::choices));
        for (const std::int64_t minutes : AudioInactivityMinutes::choices)
            all.push_back(std::to_string(minutes));
        return all;
    };
    return codec;
}

SettingCodec<std::int64_t> percentCodec() {
    return integerCodec(0, 100);
}
SettingCodec<std::int64_t> pointsCodec() {
    return integerCodec(6, 200);
}
SettingCodec<std::int64_t> millisecondsCodec() {
    return integerCodec(0, 3600000);
}

} // namespace tessarune
