#include "Tessarune/ui/settings/CaptionPreview.h"

#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "TessaruneCore/text/Text.h"

#include <iterator>

namespace tessarune {

namespace {

constexpr int wordMS = 420;
/// The preview starts over after this many complete rows.
constexpr std::size_t maximumRows = 6;

struct SpokenSentence {
    const char* source;
    const char* translation; ///< in the default target language
};

constexpr SpokenSentence sentences[] = {
    {"It was the best of times, it was the worst of times.",
     "那是最美好的时代，那是最糟糕的时代。"},
    {"It was the age of wisdom, it was the age of foolishness.",
     "那是智慧的年代，那是愚昧的年代。"},
    {"We had everything before us, we had nothing before us.",
     "我们面前应有尽有，我们面前一无所有。"},
};

LiveCaptionDisplaySegment row(const std::string& source, const char* translation) {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = source;
    segment.state = translation ? CaptionSegmentState::final : CaptionSegmentState::partial;
    if (translation)
        segment.translatedText = translation;
    return *LiveCaptionDisplaySegment::from(segment);
}

} // namespace

CaptionPreview::CaptionPreview(const SettingsWindowEnvironment& environment)
    : core_(LiveCaptionCoreFactory::make(environment.host, environment.settings)),
      session_(display_, core_, noTranslation_.view()),
      environment_{.host = environment.host,
                   .settings = environment.settings,
                   .session = session_,
                   .soundName = noFile_,
                   .notice = noNotice_,
                   .store = environment.store,
                   .commands = {},
                   .reducesMotion = environment.reducesMotion},
      stage_(environment_),
      window_(environment_) {
    frame_.sessionPhase = LiveSessionPhase::listening;
    wordTimer_.setInterval(wordMS);
    connect(&wordTimer_, &QTimer::timeout, this, &CaptionPreview::sayNextWord);
    settle();
    spoken_ = 4; // the first frame shows a complete sentence and a part of the next one
    sayNextWord();
}

void CaptionPreview::setRunning(bool running) {
    if (running == isRunning())
        return;
    if (running)
        wordTimer_.start();
    else
        wordTimer_.stop();
    Q_EMIT runningChanged();
}

void CaptionPreview::sayNextWord() {
    const SpokenSentence& speaking = sentences[sentence_];
    const auto words = Text::splitAtBlanks(speaking.source);
    if (++spoken_ > words.size()) {
        settle();
    } else {
        const std::vector<std::string_view> said(
            words.begin(), words.begin() + static_cast<std::ptrdiff_t>(spoken_));
        frame_.livePartialRow = row(Text::joined(said, " "), nullptr);
    }
    ++frame_.sourceRevision;
    display_.update(frame_);
}

/// Completes the spoken sentence, shows its translation and turns to the next sentence.
void CaptionPreview::settle() {
    const SpokenSentence& done = sentences[sentence_];
    if (frame_.sourceTextTail.size() >= maximumRows) { // starts over
        frame_.sourceTextTail = {};
        frame_.translationTail = {};
    }
    frame_.sourceTextTail.push_back(row(done.source, done.translation));
    frame_.mergedBilingualSourceTail = frame_.sourceTextTail;
    frame_.translationTail.push_back(done.translation);
    frame_.livePartialRow.reset();
    sentence_ = (sentence_ + 1) % std::size(sentences);
    spoken_ = 0;
}

} // namespace tessarune
