#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The translation languages and backends: targets with their platform identifiers, the state of a
/// backend as text, and the message about missing language resources in each target language. Pure
/// functions, safe from any thread.
namespace tessarune::TranslationSupport {

inline constexpr std::string_view defaultSourceLanguage = "en";
inline constexpr std::string_view appleBackendName = "苹果";
inline constexpr std::string_view disabledBackendName = "关闭";
inline constexpr bool appleOfflineSupported = true;
inline constexpr std::string_view appleOfflineRequirementText = "macOS 26 或更高版本";
/// Localisation keys: a short status without a full stop, and a sentence.
inline constexpr std::string_view appleOfflineUnsupportedMessage = "当前系统不支持 Apple 离线翻译";
inline constexpr std::string_view appleOfflineUnsupportedSentence =
    "当前系统不支持 Apple 离线翻译。";

struct TranslationTargetLanguage {
    std::string id;
    std::string flag;

    bool operator==(const TranslationTargetLanguage&) const = default;
};

/// What a backend can do for a target, as localised texts.
struct BackendStatus {
    std::string title;
    std::string detail;
    bool isRunnable = false;
};

/// The targets in display order.
const std::vector<TranslationTargetLanguage>& targetLanguages();
/// The target with this `id`, or null.
const TranslationTargetLanguage* targetLanguage(std::string_view id);
/// Finds the `id` of the target that a user wrote, in upper or lower case. Accepts "_" for "-", a
/// redundant region ("ja-JP") and a missing one ("pt" for "pt-BR"). For Chinese, the script or
/// the region decides between "zh-Hans" and "zh-Hant". `nullopt` if it is not a target.
std::optional<std::string> targetLanguageID(std::string_view written);
/// The language's localised name; an unknown `id` is returned unchanged.
std::string translationTargetDisplayName(const TranslationTargetLanguage& language);
/// The identifier that the translation service uses; an unknown `id` is returned unchanged.
std::string appleLanguageIdentifier(std::string_view id);

/// Whether two identifiers share their primary subtag, as "zh-Hans" and "zh-Hant" do.
bool isSameLanguageTarget(std::string_view target, std::string_view source = defaultSourceLanguage);
/// Always true: the source language may be tested as a target, too.
bool canRunAppleTranslationTest(std::string_view target);

/// If the target is simplified Chinese, converts the text to simplified characters, because the
/// service sometimes returns traditional ones. Texts for other targets stay as they are.
std::string normalizedTranslatedText(std::string_view text, std::string_view target);

bool isAppleBackend(std::string_view name);
bool isDisabledBackend(std::string_view name);
/// The stored name of a backend; an unknown name maps to the default backend.
std::string_view normalizedBackend(std::string_view name);
bool canUseSoftTranslation(std::string_view backend);
std::string backendDisplayName(std::string_view name);
BackendStatus backendStatus(std::string_view backend, std::string_view target);
/// "… is not connected yet", as a short status and as a sentence that says what to do.
std::string backendNotConnectedMessage(std::string_view backend);
std::string backendNotConnectedSentence(std::string_view backend);

/// The message is in the target language, because it replaces the translation on screen.
std::string_view languageResourceNotReadyMessage(std::string_view target);
bool isLanguageResourceNotReadyDisplayMessage(std::string_view text);
/// The text of a row's failure as a status line.
std::string translationFailureStatusText(std::string_view error);

/// The localised text about a pair that cannot be translated.
std::string unsupportedPairMessage(std::string_view source, std::string_view target);

/// The key of a language pair in maps: the `appleLanguageIdentifier` of source and target, joined
/// with "->".
std::string languagePairKey(std::string_view source, std::string_view target);

} // namespace tessarune::TranslationSupport
