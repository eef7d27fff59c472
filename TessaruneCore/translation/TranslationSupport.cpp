#include "TessaruneCore/translation/TranslationSupport.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/EmojiFlagSupport.h"

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <memory>

namespace tessarune::TranslationSupport {

namespace {

struct Language {
    std::string_view id;
    std::string_view platformIdentifier;
    std::string_view displayName;
    std::string_view flag; ///< empty: depends on the machine
    std::string_view resourcesNotReady;
};

constexpr std::array<Language, 19> languages{{
    {"zh-Hans", "zh-Hans", "中文（中国大陆）", "🇨🇳",
     "Apple 翻译语言资源暂未准备，请您在设置-翻译验证"},
    {"ja", "ja-JP", "日本語", "🇯🇵",
     "Apple翻訳言語リソースの準備がまだ完了していません。設定の「翻訳」で確認してください。"},
    {"ko", "ko-KR", "한국어", "🇰🇷",
     "Apple 번역 언어 리소스가 아직 준비되지 않았습니다. 설정 > 번역에서 확인해 주세요."},
    {"es", "es-ES", "Español", "🇪🇸",
     "Los recursos de idioma de Apple Translation aún no están listos. Verifícalos en "
     "Configuración > Traducción."},
    {"fr", "fr-FR", "Français", "🇫🇷",
     "Les ressources linguistiques d’Apple Traduction ne sont pas encore prêtes. Vérifiez-les dans "
     "Réglages > Traduction."},
    {"de", "de-DE", "Deutsch", "🇩🇪",
     "Die Sprachressourcen von Apple Übersetzen sind noch nicht bereit. Bitte in Einstellungen > "
     "Übersetzung überprüfen."},
    {"zh-Hant", "zh-Hant", "繁體中文", "", "Apple 翻譯語言資源尚未準備，請您在設定-翻譯驗證"},
    {"pt-BR", "pt-BR", "Português (Brasil)", "🇧🇷",
     "Os recursos de idioma do Apple Tradutor ainda não estão prontos. Verifique em Ajustes > "
     "Tradução."},
    {"it", "it-IT", "Italiano", "🇮🇹",
     "Le risorse linguistiche di Apple Traduci non sono ancora pronte. Verificale in Impostazioni "
     "> Traduzione."},
    {"ru", "ru-RU", "Русский", "🇷🇺",
     "Языковые ресурсы Apple Translate ещё не готовы. Проверьте их в Настройки > Перевод."},
    {"ar", "ar-SA", "العربية", "🇸🇦",
     "لم تكتمل جاهزية موارد لغة ترجمة Apple بعد. يُرجى التحقق منها في الإعدادات > الترجمة."},
    {"hi", "hi-IN", "हिन्दी", "🇮🇳",
     "Apple अनुवाद भाषा संसाधन अभी तैयार नहीं हैं। कृपया सेटिंग्स > अनुवाद में सत्यापित करें।"},
    {"vi", "vi-VN", "Tiếng Việt", "🇻🇳",
     "Tài nguyên ngôn ngữ Apple Dịch chưa sẵn sàng. Vui lòng xác minh trong Cài đặt > Dịch."},
    {"th", "th-TH", "ไทย", "🇹🇭",
     "ทรัพยากรภาษาของ Apple Translate ยังไม่พร้อม โปรดตรวจสอบใน การตั้งค่า > การแปล"},
    {"id", "id-ID", "Bahasa Indonesia", "🇮🇩",
     "Sumber daya bahasa Apple Terjemahan belum siap. Silakan verifikasi di Pengaturan > "
     "Terjemahan."},
    {"tr", "tr-TR", "Türkçe", "🇹🇷",
     "Apple Çeviri dil kaynakları henüz hazır değil. Lütfen Ayarlar > Çeviri bölümünde "
     "doğrulayın."},
    {"pl", "pl-PL", "Polski", "🇵🇱",
     "Zasoby językowe Apple Tłumacz nie są jeszcze gotowe. Sprawdź je w Ustawienia > Tłumaczenie."},
    {"nl", "nl-NL", "Nederlands", "🇳🇱",
     "De taalbronnen van Apple Vertaal zijn nog niet klaar. Controleer ze in Instellingen > "
     "Vertaling."},
    {"uk", "uk-UA", "Українська", "🇺🇦",
     "Мовні ресурси Apple Перекладача ще не готові. Перевірте їх у Параметри > Переклад."},
}};

constexpr std::string_view otherResourcesNotReady =
    "Apple translation language resources are not ready. Please verify in Settings > Translation.";
constexpr std::string_view sourcePlatformIdentifier = "en-US";

const Language* language(std::string_view id) {
    const auto found = std::find_if(languages.begin(), languages.end(),
                                    [&](const Language& row) { return row.id == id; });
    return found == languages.end() ? nullptr : &*found;
}

std::string primarySubtag(std::string_view id) {
    std::string withHyphens;
    std::string part;
    bool ended = false;
    for (const auto character : Text::characters(id)) {
        const bool separates = character == "-" || character == "_";
        withHyphens += separates ? "-" : character;
        ended = ended || (separates && !part.empty());
        if (!separates && !ended)
            part += character;
    }
    return Text::lowercased(part.empty() ? withHyphens : part);
}

/// The Chinese target for the part of an identifier after "zh" ("", "-tw", "-hant-hk"). The script
/// decides, or the region if there is no script.
std::optional<std::string> chineseID(std::string_view lowercaseRest) {
    if (lowercaseRest.empty())
        return "zh-Hans";
    constexpr std::pair<std::string_view, const char*> marks[] = {
        {"-hans", "zh-Hans"}, {"-hant", "zh-Hant"}, {"-cn", "zh-Hans"}, {"-sg", "zh-Hans"},
        {"-tw", "zh-Hant"},   {"-hk", "zh-Hant"},   {"-mo", "zh-Hant"}};
    for (const auto& [mark, id] : marks) {
        if (lowercaseRest.find(mark) != std::string_view::npos)
            return id;
    }
    return std::nullopt;
}

std::string simplified(std::string_view text) {
    // Construction parses some thousand rules, so there is one instance; its use is thread-safe.
    static const std::unique_ptr<const icu::Transliterator> transform = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<const icu::Transliterator> transliterator(
            icu::Transliterator::createInstance("Traditional-Simplified", UTRANS_FORWARD, status));
        return U_SUCCESS(status) ? std::move(transliterator) : nullptr;
    }();
    if (!transform)
        return std::string(text);
    auto characters =
        icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    transform->transliterate(characters);
    std::string result;
    characters.toUTF8String(result);
    return result;
}

} // namespace

const std::vector<TranslationTargetLanguage>& targetLanguages() {
    static const std::vector<TranslationTargetLanguage> targets = [] {
        std::vector<TranslationTargetLanguage> list;
        list.reserve(std::size(languages));
        for (const auto& row : languages)
            list.push_back(
                {std::string(row.id),
                 std::string(row.flag.empty() ? EmojiFlagSupport::traditionalChineseFlag()
                                              : row.flag)});
        return list;
    }();
    return targets;
}

const TranslationTargetLanguage* targetLanguage(std::string_view id) {
    const auto& targets = targetLanguages();
    const auto found = std::find_if(targets.begin(), targets.end(),
                                    [&](const auto& target) { return target.id == id; });
    return found == targets.end() ? nullptr : &*found;
}

std::optional<std::string> targetLanguageID(std::string_view written) {
    std::string wanted = Text::lowercased(written);
    std::ranges::replace(wanted, '_', '-');
    const std::string primary = wanted.substr(0, wanted.find('-'));
    const std::string_view rest = std::string_view(wanted).substr(primary.size());
    if (primary == "zh")
        return chineseID(rest);
    const bool hasRegion = rest.size() == 3 || rest.size() == 4; // with the "-"
    for (const auto& row : languages) {
        const std::string id = Text::lowercased(row.id);
        const bool hasRedundantRegion = id == primary && hasRegion;
        const bool lacksItsRegion = rest.empty() && id.starts_with(primary + "-");
        if (id == wanted || hasRedundantRegion || lacksItsRegion)
            return std::string(row.id);
    }
    return std::nullopt;
}

std::string translationTargetDisplayName(const TranslationTargetLanguage& target) {
    const auto* row = language(target.id);
    return row ? localized(row->displayName) : target.id;
}

std::string appleLanguageIdentifier(std::string_view id) {
    if (id == defaultSourceLanguage)
        return std::string(sourcePlatformIdentifier);
    const auto* row = language(id);
    return std::string(row ? row->platformIdentifier : id);
}

bool isSameLanguageTarget(std::string_view target, std::string_view source) {
    return Text::equal(primarySubtag(target), primarySubtag(source));
}

bool canRunAppleTranslationTest(std::string_view) {
    return true;
}

std::string normalizedTranslatedText(std::string_view text, std::string_view target) {
    return target == "zh-Hans" ? simplified(text) : std::string(text);
}

bool isAppleBackend(std::string_view name) {
    return name == appleBackendName || name == "Apple";
}

bool isDisabledBackend(std::string_view name) {
    return name == disabledBackendName || name == "Off";
}

std::string_view normalizedBackend(std::string_view name) {
    return isDisabledBackend(name) ? disabledBackendName : appleBackendName;
}

bool canUseSoftTranslation(std::string_view backend) {
    return isAppleBackend(backend);
}

std::string backendDisplayName(std::string_view name) {
    if (isAppleBackend(name))
        return localized(appleBackendName);
    if (isDisabledBackend(name))
        return localized(disabledBackendName);
    return std::string(name);
}

BackendStatus backendStatus(std::string_view backend, std::string_view target) {
    if (isDisabledBackend(backend))
        return {localized("已关闭"), localized("实时字幕只显示原文，不提交译文。"), false};
    if (isAppleBackend(backend)) {
        if (isSameLanguageTarget(target))
            return {localized("同语种直通"),
                    localized("目标语言与源语言相同，译文会直接使用原文。"), true};
        return {localized("可用"),
                localized("Apple 离线翻译会处理已稳定的句子；首次使用可能需要准备语言资源。"),
                true};
    }
    return {localized("未接入"),
            localized("%@翻译尚未接入，请切换到 Apple 离线翻译。", {backendDisplayName(backend)}),
            false};
}

std::string backendNotConnectedMessage(std::string_view backend) {
    return localized("%@翻译尚未接入", {backendDisplayName(backend)});
}

std::string backendNotConnectedSentence(std::string_view backend) {
    return localized("%@翻译尚未接入，请切换到苹果离线翻译。", {backendDisplayName(backend)});
}

std::string_view languageResourceNotReadyMessage(std::string_view target) {
    const auto* row = language(target);
    return row ? row->resourcesNotReady : otherResourcesNotReady;
}

bool isLanguageResourceNotReadyDisplayMessage(std::string_view text) {
    const auto trimmed = Text::trimmed(text);
    return std::any_of(languages.begin(), languages.end(), [&](const Language& row) {
        return Text::equal(trimmed, row.resourcesNotReady);
    });
}

std::string translationFailureStatusText(std::string_view error) {
    if (isLanguageResourceNotReadyDisplayMessage(error))
        return std::string(error);
    return localized("翻译失败：%@", {std::string(error)});
}

std::string unsupportedPairMessage(std::string_view source, std::string_view target) {
    return localized("不支持的翻译方向: %@ → %@", {std::string(source), std::string(target)});
}

std::string languagePairKey(std::string_view source, std::string_view target) {
    return appleLanguageIdentifier(source) + "->" + appleLanguageIdentifier(target);
}

} // namespace tessarune::TranslationSupport
