#include "Tessarune/ui/welcome/WelcomeModel.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <QLocale>
#include <algorithm>
#include <exception>
#include <optional>

namespace tessarune {

namespace {

QString shown(std::string_view key) {
    return QString::fromStdString(localized(key));
}

std::vector<TranslationLanguageState> offered(const TranslationLanguages& languages) {
    std::vector<TranslationLanguageState> all = languages.list();
    std::erase_if(all, [](const TranslationLanguageState& language) {
        return language.status == TranslationAvailabilityStatus::unsupported;
    });
    return all;
}

std::string sizeText(std::uint64_t bytes) {
    return QLocale()
        .formattedDataSize(static_cast<qint64>(bytes), 0, QLocale::DataSizeSIFormat)
        .toStdString();
}

/// The sizes of translation models come with their list, which is downloaded with the first model.
/// Until then they are 0, and the text names the maximum.
std::string translationSizeText(std::uint64_t bytes) {
    constexpr std::uint64_t largestBytes = 60'000'000;
    return bytes == 0 ? localized("最多 %@", {sizeText(largestBytes)}) : sizeText(bytes);
}

} // namespace

WelcomeModel::WelcomeModel(const WelcomeEnvironment& environment)
    : environment_(environment), targets_(offered(environment.languages)) {
    observations_.follow(environment_.downloadTrouble, [this] {
        trouble_ = *environment_.downloadTrouble;
        Q_EMIT changed();
    });
    const AppSettings& settings = environment_.settings;
    if (TranslationSupport::isDisabledBackend(*settings.translationBackend))
        return;
    const auto chosen = std::ranges::find(targets_, *settings.translationTargetLanguage,
                                          &TranslationLanguageState::id);
    if (chosen != targets_.end())
        language_ = static_cast<int>(chosen - targets_.begin()) + 1;
}

QStringList WelcomeModel::languages() const {
    QStringList names{shown("不翻译")};
    for (const TranslationLanguageState& target : targets_) {
        const auto* const language = TranslationSupport::targetLanguage(target.id);
        names << QString::fromStdString(
            language ? TranslationSupport::translationTargetDisplayName(*language) : target.id);
    }
    return names;
}

void WelcomeModel::setLanguage(int index) {
    if (index == language_ || index < 0 || index > static_cast<int>(targets_.size()))
        return;
    language_ = index;
    Q_EMIT changed();
}

std::optional<WelcomeModel::Missing> WelcomeModel::missingSpeech() const {
    const std::vector<SpeechModelState> models = environment_.speech.list();
    const bool hasModel = std::ranges::any_of(models, [](const SpeechModelState& model) {
        return model.isInstalled && model.damage.empty();
    });
    if (hasModel || models.empty())
        return std::nullopt;
    return Missing{models.front().name, models.front().bytes};
}

std::optional<WelcomeModel::Missing> WelcomeModel::missingTranslation() const {
    if (language_ == 0)
        return std::nullopt;
    const std::string& id = targets_[static_cast<std::size_t>(language_ - 1)].id;
    for (const TranslationLanguageState& language : environment_.languages.list()) {
        const bool isIntact =
            language.status == TranslationAvailabilityStatus::installed && language.damage.empty();
        if (language.id == id && !isIntact)
            return Missing{id, language.bytes};
    }
    return std::nullopt;
}

QString WelcomeModel::downloads() const {
    std::string text;
    if (const auto speech = missingSpeech())
        text = localized("语音模型 %@", {sizeText(speech->bytes)});
    if (const auto translation = missingTranslation())
        text += (text.empty() ? "" : " + ") +
                localized("翻译模型 %@", {translationSizeText(translation->bytes)});
    return QString::fromStdString(text.empty() ? localized("无需下载。")
                                               : localized("将下载：%@", {text}));
}

QString WelcomeModel::stage() const {
    switch (stage_) {
    case Stage::ask:
        return QStringLiteral("ask");
    case Stage::download:
        return QStringLiteral("download");
    case Stage::sample:
        return QStringLiteral("sample");
    case Stage::ready:
        return QStringLiteral("ready");
    }
    return {};
}

QString WelcomeModel::beginText() const {
    return missingSpeech() || missingTranslation() ? shown("下载并试一试") : shown("试一试");
}

double WelcomeModel::progress() const {
    return expected_ == 0 ? -1 : static_cast<double>(received_) / static_cast<double>(expected_);
}

QString WelcomeModel::downloadText() const {
    return trouble_.empty() ? shown("正在下载…") : QString::fromStdString(trouble_);
}

QVariantMap WelcomeModel::texts() {
    return {{"title", shown("欢迎使用 Tessarune")},
            {"about", shown("把电脑播放的英语变成字幕和译文，全部在这台电脑上完成。")},
            {"language", shown("翻译成")},
            {"downloading", shown("正在下载…")},
            {"sample", shown("这是示例语音的字幕，不会保存：")},
            {"skip", shown("跳过")},
            {"done", shown("开始使用")}};
}

void WelcomeModel::enter(Stage stage) {
    stage_ = stage;
    Q_EMIT changed();
}

void WelcomeModel::show(std::uint64_t received, std::uint64_t expected) {
    if (received != received_)
        trouble_.clear();
    received_ = received;
    expected_ = expected;
    Q_EMIT changed();
}

void WelcomeModel::applyLanguage() {
    AppSettings& settings = environment_.settings;
    if (language_ == 0) {
        settings.translationBackend = std::string(TranslationSupport::disabledBackendName);
        return;
    }
    if (TranslationSupport::isDisabledBackend(*settings.translationBackend))
        settings.translationBackend.restore();
    settings.translationTargetLanguage = targets_[static_cast<std::size_t>(language_ - 1)].id;
}

void WelcomeModel::begin() {
    if (stage_ != Stage::ask)
        return;
    applyLanguage();
    start();
}

void WelcomeModel::start() {
    problem_.clear();
    trouble_.clear();
    enter(Stage::download);
    run_ = spawn(Executor::main(environment_.host), run());
}

/// Does not store the language, which the user has not chosen. If the page does not offer the
/// language of the settings, "no translation" would be stored in its place.
void WelcomeModel::beginIfComplete() {
    if (stage_ == Stage::ask && !missingSpeech() && !missingTranslation())
        start();
}

/// The sample starts as soon as there is a speech model; it does not wait for the translation
/// model. If the sample cannot be played, the translation model is downloaded nevertheless.
Task<void> WelcomeModel::run() {
    Stage next = Stage::ask;
    try {
        Task<void> downloading = downloadSpeech();
        co_await downloading;
        if (stop_.stop_requested()) // the page was closed when the download had just ended
            co_return;
        next = Stage::ready;
        Task<std::string> playing = environment_.playSample();
        problem_ = co_await playing;
    } catch (const std::exception& error) {
        problem_ = error.what();
    }
    isDownloading_ = false;
    if (problem_.empty())
        next = Stage::sample;
    enter(next);
    if (next == Stage::ask || stop_.stop_requested() || !missingTranslation())
        co_return;
    isDownloading_ = true;
    try {
        Task<void> downloading = downloadTranslation();
        co_await downloading;
    } catch (const std::exception& error) {
        problem_ = error.what();
    }
    isDownloading_ = false;
    Q_EMIT changed();
}

Task<void> WelcomeModel::downloadSpeech() {
    const auto speech = missingSpeech();
    if (!speech)
        co_return;
    isDownloading_ = true;
    show(0, speech->bytes);
    Task<void> downloading = environment_.speech.download(
        speech->id, [this](AssetProgress now) { show(now.received, now.expected); },
        stop_.get_token());
    co_await downloading;
}

Task<void> WelcomeModel::downloadTranslation() {
    const Missing translation = *missingTranslation();
    show(0, translation.bytes);
    Task<void> downloading = environment_.languages.download(
        translation.id,
        [this](TranslationDownloadProgress now) { show(now.received, now.expected); },
        stop_.get_token());
    co_await downloading;
}

/// A download of the translation model runs in a later stage and is not stopped.
void WelcomeModel::end() {
    if (stage_ == Stage::download)
        stop_.request_stop();
}

} // namespace tessarune
