#include "Tessarune/ui/captions/CaptionHearingModel.h"

#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/ui/captions/CaptionStage.h"
#include "TessaruneCore/text/Localization.h"

#include <string>

namespace tessarune {

namespace {

constexpr int pollMS = 80;
constexpr double faintestSound = 0.05; // of the sound level, which is 0 to 1
/// A speaker's pauses are shorter than this.
constexpr double quietSeconds = 5;
/// The interval at which the delay of the captions is read.
constexpr double delayPollSeconds = 1;
/// A shorter delay is not shown.
constexpr double noticeableDelaySeconds = 5;

} // namespace

CaptionHearingModel::CaptionHearingModel(const CaptionWindowEnvironment& environment)
    : environment_(environment) {
    timer_.setInterval(pollMS);
    connect(&timer_, &QTimer::timeout, this, &CaptionHearingModel::poll);
    observations_.follow(session().sessionPhase, [this] { follow(); });
    observations_.follow(session().status, [this] { updateText(); });
    observations_.follow(session().captionDisplay.frame, [this] { updateText(); });
    follow();
}

bool CaptionHearingModel::isListening() const {
    return *session().sessionPhase == LiveSessionPhase::listening;
}

void CaptionHearingModel::follow() {
    loudAt_ = lookedAt_ = environment_.host.now();
    secondsBehind_ = 0;
    if (isListening())
        timer_.start();
    else
        timer_.stop();
    level_ = -1; // so that `poll` emits `levelChanged` in any case
    poll();
}

void CaptionHearingModel::poll() {
    const double now = environment_.host.now();
    const double level = isListening() ? session().audioLevel : 0;
    if (level >= faintestSound)
        loudAt_ = now;
    if (now - lookedAt_ >= delayPollSeconds && environment_.secondsBehind) {
        lookedAt_ = now;
        secondsBehind_ = environment_.secondsBehind();
    }
    if (level != level_) {
        level_ = level;
        Q_EMIT levelChanged();
    }
    updateText();
}

void CaptionHearingModel::updateText() {
    const QString text = QString::fromStdString(reason());
    if (text == text_)
        return;
    text_ = text;
    Q_EMIT textChanged();
}

std::string CaptionHearingModel::reason() const {
    using Kind = SessionStatus::Kind;
    const bool hasOutput = CaptionStage::hasCaptionOutput(*session().captionDisplay.frame);
    const Kind kind = session().status->kind;
    const bool isIdle = kind == Kind::idle || kind == Kind::translation;
    if (*session().sessionPhase == LiveSessionPhase::idle && hasOutput && isIdle)
        return localized("字幕已停止");
    if (!isListening() || kind == Kind::interrupted || kind == Kind::silent)
        return {};
    if (secondsBehind_ >= noticeableDelaySeconds)
        return localized("The captions are %lld s behind: this computer is too slow for the speech "
                         "model.",
                         {std::to_string(static_cast<int>(secondsBehind_))});
    if (hasOutput && environment_.host.now() - loudAt_ >= quietSeconds)
        return localized("现在没有声音");
    if (!hasOutput && !session().clearedSegmentIDs->empty())
        return localized(
            "正在收听：%@",
            {environment_.soundName->empty()
                 ? AudioSourceDisplayName::name(*session().selectedSource, *session().inputDevices)
                 : *environment_.soundName});
    return {};
}

} // namespace tessarune
