#include "bench/window/StagedWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickItem>
#include <chrono>

namespace tessarune {

namespace {

const std::string spokenText =
    "It was the best of times, it was the worst of times, it was the age of wisdom, and so on.";
const std::string translatedText = "那是最美好的时代，那是最糟糕的时代，那是智慧的年代，如此等等。";

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

StagedWindow::StagedWindow(QtHost& host, std::size_t rows)
    : cache_(now),
      store_(now),
      core_(LiveCaptionCoreFactory::make(host, settings_)),
      session_(store_, core_, noTranslation_.view()),
      window_({.host = host,
               .settings = settings_,
               .session = session_,
               .soundName = noFile_,
               .notice = noNotice_,
               .store = defaults_,
               .commands = {},
               .reducesMotion = reducesMotion_}) {
    settings_.subtitleReviewAutoReturnSeconds = 3600; // a scrolled list stays where it is
    partial_.id = newID_();
    while (committed_.size() < rows)
        commit();
    session_.sessionPhase = LiveSessionPhase::listening;
    window_.show();
    for (int i = 0; i < 20; ++i) { // until the window is laid out and the caches are warm
        speak();
        show();
    }
}

void StagedWindow::commit() {
    CaptionSegment row;
    row.id = newID_();
    row.sourceText = spokenText;
    row.translatedText = translatedText;
    row.state = CaptionSegmentState::final;
    committed_.push_back(std::move(row));
}

void StagedWindow::speak() {
    partial_.sourceText = spokenText.substr(0, 12 + ++words_ * 5 % 60);
    ++partial_.revision;
}

void StagedWindow::settle() {
    commit();
    partial_.id = newID_();
    partial_.sourceText = "It";
    words_ = 0;
}

double StagedWindow::show() {
    return present([this] {
        cache_.update({committed_, {}, {}, partial_, cleared_}, false, nullptr);
        LiveCaptionDisplayFrame frame = cache_.frame();
        frame.sessionPhase = LiveSessionPhase::listening;
        store_.update(std::move(frame));
    });
}

QQuickItem* StagedWindow::list() {
    return window_.window().findChild<QQuickItem*>("sourceList")->findChild<QQuickItem*>("list");
}

double StagedWindow::present(const std::function<void()>& change) {
    bool isShown = false;
    const auto connection = QObject::connect(&window_.window(), &QQuickWindow::frameSwapped,
                                             &window_.window(), [&] { isShown = true; });
    const double begin = now();
    change();
    while (!isShown && now() - begin < 5)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QObject::disconnect(connection);
    return now() - begin;
}

} // namespace tessarune
