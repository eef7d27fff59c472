#include "Tessarune/ui/captions/CaptionStageModel.h"

#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "Tessarune/ui/captions/CaptionFonts.h"
#include "Tessarune/ui/captions/CaptionStage.h"
#include "Tessarune/ui/captions/ShortcutKeys.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune {

namespace {

constexpr int modelLookMS = 2000;

QColor colorOf(std::int64_t rgb) {
    return QColor::fromRgb(static_cast<QRgb>(rgb));
}

} // namespace

CaptionStageModel::CaptionStageModel(const CaptionWindowEnvironment& environment)
    : environment_(environment), settings_(environment.host, environment.settings) {
    modelLook_.setInterval(modelLookMS);
    const auto changed = [this] { Q_EMIT stateChanged(); };
    const auto lookAgain = [this] {
        lookForModel();
        Q_EMIT stateChanged();
    };
    connect(&modelLook_, &QTimer::timeout, this, lookAgain);
    observations_.follow(display().frame, [this] {
        updateRows();
        if (explainedStatus_ != frame().translationStatus.text)
            lookForModel();
        Q_EMIT frameChanged();
        Q_EMIT stateChanged();
    });
    observations_.follow(environment_.soundName, changed);
    observations_.follow(environment_.session.selectedSource, changed);
    if (environment_.waiting)
        observations_.follow(*environment_.waiting, changed);
    observations_.follow(settings_.state, [this] {
        const Layout layout(isBilingual(), swaps(), settings().mergeBilingualRows);
        if (std::exchange(layout_, layout) != layout)
            Q_EMIT layoutChanged();
        updateRows();
        Q_EMIT settingsChanged();
    });
    // The translation's font depends on the target language.
    observations_.follow(environment_.settings.translationTargetLanguage.published(),
                         [this] { Q_EMIT settingsChanged(); });
    observations_.follow(environment_.settings.translationTargetLanguage.published(), lookAgain);
    observations_.follow(environment_.settings.translationBackend.published(), lookAgain);
    observations_.follow(environment_.reducesMotion, [this] { Q_EMIT settingsChanged(); });
    observations_.add(environment_.settings.shortcutToggleRecord.keyCode.onChange(changed));
    observations_.add(environment_.settings.shortcutToggleRecord.modifiers.onChange(changed));
    connect(&look_, &DesktopLook::changed, this, &CaptionStageModel::settingsChanged);
    layout_.emplace(isBilingual(), swaps(), settings().mergeBilingualRows);
    updateRows();
    lookForModel();
}

void CaptionStageModel::updateRows() {
    using Content = CaptionStageRows::Block;
    auto& perf = display().perf;
    ++perf.captionStageRenders;
    if (isBilingual()) {
        ++perf.captionStageStandardRenders;
        ++perf.captionStageBilingualCompareRenders;
        rows_.update({frame(), Content::bilingual, settings().mergeBilingualRows});
        translations_.update({});
    } else {
        ++(translates() ? perf.captionStageLyricsRenders : perf.captionStageSourceOnlyRenders);
        rows_.update({frame(), Content::source, false});
        translations_.update(translates() ? CaptionStageRows(frame(), Content::translations, false)
                                          : CaptionStageRows());
    }
}

bool CaptionStageModel::isBilingual() const {
    return settings().subtitleLayoutMode == SubtitleLayoutMode::bilingualCompare;
}

qulonglong CaptionStageModel::contentRevision() const {
    return CaptionStage::contentRevision(frame());
}

bool CaptionStageModel::isCleared() const {
    return frame().sessionPhase == LiveSessionPhase::listening &&
           !environment_.session.clearedSegmentIDs->empty();
}

QString CaptionStageModel::presentation() const {
    if (CaptionStage::hasCaptionOutput(frame()))
        return QStringLiteral("content");
    const auto empty = CaptionStage::emptyPresentation(frame());
    if (!empty)
        return QStringLiteral("clear");
    switch (*empty) {
    case CaptionEmptyPresentation::idle:
        return environment_.isWaiting() ? QStringLiteral("empty-checking")
                                        : QStringLiteral("empty-idle");
    case CaptionEmptyPresentation::checking:
        // A user who cleared the captions knows that there is sound.
        return isCleared() ? QStringLiteral("clear") : QStringLiteral("empty-checking");
    case CaptionEmptyPresentation::silent:
        return QStringLiteral("empty-silent");
    }
    return {};
}

namespace {

struct EmptyTexts {
    std::string title;
    std::string subtitle;
};

/// The title of the idle stage, with the key that starts captions, if there is one.
std::string invitation(const ShortcutSetting& start) {
    const QKeySequence keys = keysOf(start);
    if (keys == QKeySequence(Qt::Key_Space))
        return LiveCaptionUserMessages::idleTitle();
    return keys.isEmpty() ? localized("点击开始")
                          : localized("点击开始，或按 %@",
                                      {keys.toString(QKeySequence::NativeText).toStdString()});
}

/// `heard` is the name of the file or microphone that is heard in place of the computer; empty:
/// none.
EmptyTexts emptyTexts(const LiveCaptionDisplayFrame& frame, const std::string& heard) {
    using namespace LiveCaptionUserMessages;
    const auto empty = CaptionStage::emptyPresentation(frame);
    if (!empty)
        return {};
    switch (*empty) {
    case CaptionEmptyPresentation::idle:
        return {idleTitle(), heard.empty() ? idleSubtitle() : heard};
    case CaptionEmptyPresentation::checking:
        if (!heard.empty())
            return {localized("正在收听：%@", {heard}), ""};
        return {checkingTitle(), checkingSubtitle()};
    case CaptionEmptyPresentation::silent:
        return {silentTitle(), Text::joined(silentSubtitleLines(), "\n")};
    }
    return {};
}

} // namespace

std::string CaptionStageModel::heardName() const {
    const SessionView& session = environment_.session;
    if (environment_.soundName->empty() && session.selectedSource->isMicrophone())
        return AudioSourceDisplayName::name(*session.selectedSource, *session.inputDevices);
    return *environment_.soundName;
}

QString CaptionStageModel::emptyTitle() const {
    if (environment_.isWaiting())
        return QString::fromStdString(environment_.waitingText());
    if (CaptionStage::emptyPresentation(frame()) == CaptionEmptyPresentation::idle)
        return QString::fromStdString(invitation(environment_.settings.shortcutToggleRecord));
    return QString::fromStdString(emptyTexts(frame(), heardName()).title);
}

QString CaptionStageModel::emptySubtitle() const {
    if (environment_.isWaiting())
        return {};
    return QString::fromStdString(emptyTexts(frame(), heardName()).subtitle);
}

QString CaptionStageModel::emptyRemedy() const {
    const bool isSilent =
        CaptionStage::emptyPresentation(frame()) == CaptionEmptyPresentation::silent;
    return isSilent && environment_.commands.openDesktopSettings
               ? QString::fromStdString(localized("声音设置…"))
               : QString();
}

void CaptionStageModel::remedyEmpty() const {
    environment_.commands.openDesktopSettings(PermissionsManager::Key::systemAudioStatus);
}

/// Checks whether the translation model is missing. Called repeatedly while the model is missing,
/// because another program may install it; the offered action then changes from a download to a
/// retry.
void CaptionStageModel::lookForModel() {
    explainedStatus_ = frame().translationStatus.text;
    const bool lacks =
        !explainedStatus_.empty() && environment_.lacksTranslationModel &&
        TranslationSupport::isAppleBackend(*environment_.settings.translationBackend) &&
        environment_.lacksTranslationModel();
    if (std::exchange(lacksModel_, lacks) == lacks)
        return;
    if (lacks)
        modelLook_.start();
    else
        modelLook_.stop();
}

QString CaptionStageModel::translationStatus() const {
    const auto* const language =
        TranslationSupport::targetLanguage(*environment_.settings.translationTargetLanguage);
    if (!language || !lacksModel_) {
        const std::string& text = frame().translationStatus.text;
        // The message that the language's model is not ready is replaced: it is in the target
        // language, names another platform's translator, and may be outdated.
        return QString::fromStdString(
            TranslationSupport::isLanguageResourceNotReadyDisplayMessage(text)
                ? localized("Some captions are not translated yet.")
                : text);
    }
    return QString::fromStdString(localized(
        "尚未下载“%@”的翻译模型。", {TranslationSupport::translationTargetDisplayName(*language)}));
}

QString CaptionStageModel::translationRemedy() const {
    if (lacksModel_)
        return QString::fromStdString(localized("下载…"));
    return frame().translationStatus.canRetryIncomplete
               ? QString::fromStdString(localized("补齐未完成译文"))
               : QString();
}

void CaptionStageModel::remedyTranslation() const {
    if (lacksModel_)
        environment_.commands.showSettings("translation");
    else
        environment_.commands.retryTranslation();
}

QString CaptionStageModel::listName() const {
    return QString::fromStdString(localized("字幕"));
}

QString CaptionStageModel::newestText() const {
    return QString::fromStdString(localized("回到最新字幕"));
}

QColor CaptionStageModel::highlightColor() const {
    return colorOf(settings().highlightColorHex);
}

QFont CaptionStageModel::sourceFont() const {
    return captionFont(TranslationSupport::defaultSourceLanguage, settings().sourceFontSize,
                       look_.textScale());
}

QFont CaptionStageModel::translationFont() const {
    return captionFont(*environment_.settings.translationTargetLanguage,
                       settings().translationFontSize, look_.textScale());
}

QColor CaptionStageModel::sourceColor() const {
    return colorOf(settings().sourceFontColorHex);
}

QColor CaptionStageModel::translationColor() const {
    return colorOf(settings().translationFontColorHex);
}

} // namespace tessarune
