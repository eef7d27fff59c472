#include "Tessarune/ui/captions/CaptionToolbarModel.h"

#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/history/DurationTextFormatter.h"
#include "Tessarune/ui/captions/CaptionStage.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

QString text(std::string_view key) {
    return QString::fromStdString(localized(key));
}

} // namespace

CaptionToolbarModel::CaptionToolbarModel(const CaptionWindowEnvironment& environment)
    : environment_(environment), settings_(environment.host, environment.settings) {
    const auto announce = [this](auto changed) {
        return [this, changed] { Q_EMIT(this->*changed)(); };
    };
    observations_.follow(session().isListening, announce(&CaptionToolbarModel::sessionChanged));
    observations_.follow(session().status, announce(&CaptionToolbarModel::sessionChanged));
    observations_.follow(session().presentedError, announce(&CaptionToolbarModel::sessionChanged));
    observations_.follow(session().sessionDuration,
                         announce(&CaptionToolbarModel::durationChanged));
    observations_.follow(session().inputDevices, announce(&CaptionToolbarModel::sourcesChanged));
    sources_.update(sourceNames());
    connect(this, &CaptionToolbarModel::sourcesChanged, this,
            [this] { sources_.update(sourceNames()); });
    const auto announceSource = [this] {
        Q_EMIT sourcesChanged();
        Q_EMIT sessionChanged();
    };
    observations_.follow(session().selectedSource, announceSource);
    observations_.follow(environment_.soundName, announceSource);
    observations_.follow(environment_.notice, announce(&CaptionToolbarModel::noticeChanged));
    if (environment_.waiting)
        observations_.follow(*environment_.waiting, announce(&CaptionToolbarModel::sessionChanged));
    observations_.follow(session().captionDisplay.frame, [this] {
        const std::pair shown(hasOutput(), showsErrorAsCaption());
        if (std::exchange(shown_, shown) != shown)
            Q_EMIT sessionChanged();
    });
    observations_.follow(settings_.state, announce(&CaptionToolbarModel::settingsChanged));
    observations_.follow(session().sessionPhase, announce(&CaptionToolbarModel::sessionChanged));
}

bool CaptionToolbarModel::hasOutput() const {
    return CaptionStage::hasCaptionOutput(*session().captionDisplay.frame);
}

/// Whether the live caption line tells why the start failed.
bool CaptionToolbarModel::showsErrorAsCaption() const {
    const auto& row = session().captionDisplay.frame->livePartialRow;
    return *session().sessionPhase == LiveSessionPhase::failed && row &&
           Text::equal(row->sourceText, Text::trimmed(*session().presentedError));
}

bool CaptionToolbarModel::isBusy() const {
    switch (*session().sessionPhase) {
    case LiveSessionPhase::preparing:
    case LiveSessionPhase::loading:
    case LiveSessionPhase::stopping:
        return true;
    case LiveSessionPhase::idle:
    case LiveSessionPhase::listening:
    case LiveSessionPhase::failed:
        break;
    }
    return environment_.isWaiting();
}

QString CaptionToolbarModel::toggleText() const {
    return isListening() ? text("停止字幕") : text("开始字幕");
}

QString CaptionToolbarModel::sourceName() const {
    return QString::fromStdString(
        environment_.soundName->empty()
            ? AudioSourceDisplayName::name(*session().selectedSource, *session().inputDevices)
            : *environment_.soundName);
}

std::vector<AudioSource> CaptionToolbarModel::listedSources() const {
    std::vector<AudioSource> sources{AudioSource::systemAudio()};
    for (const auto& device : *session().inputDevices)
        sources.push_back(AudioSource::microphone(device.id));
    return sources;
}

QStringList CaptionToolbarModel::sourceNames() const {
    QStringList names;
    for (const AudioSource& source : listedSources())
        names << QString::fromStdString(
            AudioSourceDisplayName::name(source, *session().inputDevices));
    return names;
}

int CaptionToolbarModel::currentSource() const {
    if (!environment_.soundName->empty())
        return -1;
    const auto sources = listedSources();
    const auto found = std::ranges::find(sources, *session().selectedSource);
    return found == sources.end() ? -1 : static_cast<int>(found - sources.begin());
}

QString CaptionToolbarModel::status() const {
    if (environment_.isWaiting() && !isStopping())
        return QString::fromStdString(environment_.waitingText());
    if (showsErrorAsCaption())
        return {};
    if (*session().sessionPhase == LiveSessionPhase::failed && !session().presentedError->empty())
        return QString::fromStdString(*session().presentedError);
    // During a stop, the last words clear the status, although the session is still being saved.
    if (isStopping() && session().status->kind == SessionStatus::Kind::none)
        return QString::fromStdString(SessionStatus{SessionStatus::Kind::saving}.text());
    return QString::fromStdString(session().status->text());
}

/// False for a status that the stage or the toolbar shows anyway.
bool CaptionToolbarModel::showsStatus() const {
    using Kind = SessionStatus::Kind;
    if (isStopping() && session().status->kind != Kind::silent)
        return true;
    if (environment_.isWaiting())
        return !environment_.waitingText().empty() && hasOutput();
    if (isTrouble())
        return !showsErrorAsCaption() || !statusRemedy().isEmpty();
    switch (session().status->kind) {
    case Kind::inactive:
    case Kind::saving:
    case Kind::stillSaving:
    case Kind::compressing:
    case Kind::listeningTo:
        return true;
    default:
        return false;
    }
}

bool CaptionToolbarModel::isTrouble() const {
    using Kind = SessionStatus::Kind;
    const Kind kind = session().status->kind;
    if (environment_.isWaiting())
        return false;
    return *session().sessionPhase == LiveSessionPhase::failed || kind == Kind::interrupted ||
           kind == Kind::compressionFailed || kind == Kind::transcriptNotSaved;
}

QString CaptionToolbarModel::statusRemedy() const {
    const bool isRefused = *session().sessionPhase == LiveSessionPhase::failed &&
                           !environment_.isWaiting() &&
                           RecognitionPermissionGate::isMicrophoneRefusal(session().startFailure);
    return isRefused && environment_.commands.openDesktopSettings ? text("声音设置…") : QString();
}

void CaptionToolbarModel::remedyStatus() const {
    environment_.commands.openDesktopSettings(PermissionsManager::Key::microphoneStatus);
}

QString CaptionToolbarModel::dismissText() const {
    return text("知道了");
}

QString CaptionToolbarModel::duration() const {
    return QString::fromStdString(DurationTextFormatter::compact(*session().sessionDuration));
}

QString CaptionToolbarModel::pinText() const {
    if (!environment_.otherWayToTop.empty())
        return keepOnTopText();
    return keepsOnTop() ? text("取消窗口置顶") : text("窗口置顶");
}

QString CaptionToolbarModel::keepOnTopText() const {
    return environment_.otherWayToTop.empty()
               ? text("窗口置顶")
               : QString::fromStdString(
                     localized("窗口置顶（此桌面：%@）", {environment_.otherWayToTop}));
}

QString CaptionToolbarModel::copyText() const {
    return text("复制双语字幕");
}

QString CaptionToolbarModel::copyOriginalText() const {
    return text("复制原文字幕");
}

QString CaptionToolbarModel::clearText() const {
    return text("清空屏幕字幕");
}

QString CaptionToolbarModel::layoutText() const {
    return text("切换排版模式");
}

QString CaptionToolbarModel::swapText() const {
    return text("原文/译文上下交换");
}

QString CaptionToolbarModel::historyText() const {
    return text("历史记录…");
}

QString CaptionToolbarModel::settingsText() const {
    return text("设置…");
}

QStringList CaptionToolbarModel::buttons() const {
    const auto& shown = *settings_.state;
    QStringList names;
    for (const auto& [name, isShown] : {std::pair{"swap", shown.showSwapCaptionOrder},
                                        {"layout", shown.showLayoutMode},
                                        {"copy", shown.showCopyBilingual},
                                        {"copyOriginal", shown.showCopyOriginal},
                                        {"clear", shown.showClearSubtitles},
                                        {"pin", shown.showPinWindow},
                                        {"history", shown.showHistory},
                                        {"settings", shown.showSettings}}) {
        if (isShown)
            names << QString::fromLatin1(name);
    }
    return names;
}

QVariantMap CaptionToolbarModel::texts() const {
    return {{"swap", swapText()},
            {"layout", layoutText()},
            {"copy", copyText()},
            {"copyOriginal", copyOriginalText()},
            {"clear", clearText()},
            {"pin", pinText()},
            {"history", historyText()},
            {"settings", settingsText()},
            {"more", QString::fromStdString(localized("More commands"))},
            {"close", text("关闭字幕窗口")},
            {"source", text("声音来源")}};
}

bool CaptionToolbarModel::hasLayouts() const {
    return !TranslationSupport::isDisabledBackend(*appSettings().translationBackend);
}

void CaptionToolbarModel::toggle() const {
    environment_.commands.toggleListening(LiveSessionControlTrigger::toolbarPill());
}

void CaptionToolbarModel::toggleByMenu() const {
    environment_.commands.toggleListening(LiveSessionControlTrigger::contextMenu());
}

void CaptionToolbarModel::toggleByKey() const {
    environment_.commands.toggleListening(LiveSessionControlTrigger::keyboardShortcut());
}

void CaptionToolbarModel::selectSource(int index) const {
    const auto sources = listedSources();
    if (index >= 0 && index < static_cast<int>(sources.size()))
        environment_.commands.selectSource(sources[static_cast<std::size_t>(index)]);
}

void CaptionToolbarModel::refreshSources() const {
    environment_.commands.refreshInputDevices();
}

void CaptionToolbarModel::togglePin() const {
    appSettings().keepOnTop = !*appSettings().keepOnTop;
}

void CaptionToolbarModel::cycleLayout() const {
    if (hasLayouts())
        appSettings().cycleSubtitleLayoutMode(true);
}

void CaptionToolbarModel::swapOrder() const {
    if (hasLayouts())
        appSettings().swapCaptionOrder = !*appSettings().swapCaptionOrder;
}

} // namespace tessarune
