#include "Tessarune/ui/welcome/WelcomeWindow.h"

#include "Tessarune/ui/captions/CaptionWindow.h"
#include "Tessarune/ui/controls/Controls.h"
#include "Tessarune/ui/controls/ScreenFit.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Registers the files of this static library. Qt requires these macros outside any namespace.
static void useWelcomeFiles() {
    Q_INIT_RESOURCE(welcome);
    Q_INIT_RESOURCE(qmlcache_welcome);
}

namespace tessarune {

namespace {

void registerWelcomeTypes() {
    static const bool once = [] {
        useWelcomeFiles();
        registerControls();
        CaptionWindow::registerTypes();
        qmlRegisterUncreatableType<WelcomeModel>("Tessarune", 1, 0, "WelcomeModel", {});
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace

WelcomeWindow::WelcomeWindow(WelcomeEnvironment environment, const CaptionWindowEnvironment& sample)
    : environment_(std::move(environment)), model_(environment_), stage_(sample) {
    registerWelcomeTypes();
    engine_.setInitialProperties(
        {{"model", QVariant::fromValue(&model_)}, {"stage", QVariant::fromValue(&stage_)}});
    engine_.load(QUrl(QStringLiteral("qrc:/welcome/WelcomeWindow.qml")));
    if (engine_.rootObjects().isEmpty())
        qFatal("the welcome page's files cannot be loaded");
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().front());
    new ScreenFit(*window_);
}

WelcomeWindow::~WelcomeWindow() {
    // Qt deletes the items of removed rows later, but their animations must not outlive the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void WelcomeWindow::show() {
    const bool isFirst = !window_->isVisible();
    window_->show();
    window_->raise();
    window_->requestActivate();
    if (isFirst)
        model_.beginIfComplete();
}

void WelcomeWindow::close() {
    model_.end();
    window_->hide();
}

} // namespace tessarune
