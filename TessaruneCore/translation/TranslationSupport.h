#pragma once

#include <string>
#include <string_view>
#include <vector>

/// All that the program knows about translation languages and translation backends: the targets and
/// their platform identifiers, the state of a backend as text, and the message about missing
/// language resources in each target language. Pure functions, safe from any thread.
namespace tessarune::TranslationSupport {

inline constexpr std::string_view defaultSourceLanguage = "en";
inline constexpr std::string_view appleBackendName = "苹果";
inline constexpr std::string_view disabledBackendName = "关闭";
inline constexpr bool appleOfflineSupported = true;
inline constexpr std::string_view appleOfflineRequirementText = "macOS 26 或更高版本";
/// Localisation keys: the sentence as a short status, and with its full stop.
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
/// The language's name in that language, localised; an unknown `id` as it stands.
std::string translationTargetDisplayName(const TranslationTargetLanguage& language);
/// The identifier that the translation service knows; an unknown `id` as it stands.
std::string appleLanguageIdentifier(std::string_view id);

/// Whether two identifiers share their primary subtag: "zh-Hans" and "zh-Hant" do.
bool isSameLanguageTarget(std::string_view target, std::string_view source = defaultSourceLanguage);
/// Always: a test translation is allowed for the same-language target too.
bool canRunAppleTranslationTest(std::string_view target);

/// What a translation looks like when it is shown: the service sometimes gives traditional
/// characters for simplified Chinese.
std::string normalizedTranslatedText(std::string_view text, std::string_view target);

bool isAppleBackend(std::string_view name);
bool isDisabledBackend(std::string_view name);
/// The stored name of a backend; an unknown one becomes the default backend.
std::string_view normalizedBackend(std::string_view name);
bool canUseSoftTranslation(std::string_view backend);
std::string backendDisplayName(std::string_view name);
BackendStatus backendStatus(std::string_view backend, std::string_view target);
/// "… is not connected yet", as a short status and as a sentence that says what to do.
std::string backendNotConnectedMessage(std::string_view backend);
std::string backendNotConnectedSentence(std::string_view backend);

/// In the language of the target, since it stands where the translation would stand.
std::string_view languageResourceNotReadyMessage(std::string_view target);
bool isLanguageResourceNotReadyDisplayMessage(std::string_view text);
/// The text of a row's failure as a status line.
std::string translationFailureStatusText(std::string_view error);

/// The localised text about a pair that cannot be translated.
std::string unsupportedPairMessage(std::string_view source, std::string_view target);

/// One language pair as the key of maps: the platform identifiers, joined with "->".
std::string languagePairKey(std::string_view source, std::string_view target);

} // namespace tessarune::TranslationSupport
