#include "Tessarune/ui/captions/CaptionWindow.h"

#include "Tessarune/ui/captions/CaptionFollow.h"
#include "Tessarune/ui/captions/CaptionSelection.h"
#include "Tessarune/ui/captions/CaptionToolbarFit.h"
#include "Tessarune/ui/captions/MenuWindow.h"
#include "Tessarune/ui/captions/StreamingText.h"
#include "Tessarune/ui/controls/Controls.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Registers the files of this static library. Qt requires these macros outside any namespace.
static void useCaptionFiles() {
    Q_INIT_RESOURCE(captions);
    Q_INIT_RESOURCE(qmlcache_captions);
}

namespace tessarune {

void CaptionWindow::registerTypes() {
    static const bool once = [] {
        useCaptionFiles();
        registerControls();
        qmlRegisterType<CaptionFollow>("Tessarune", 1, 0, "CaptionFollow");
        qmlRegisterType<CaptionSelection>("Tessarune", 1, 0, "CaptionSelection");
        qmlRegisterUncreatableType<CaptionHearingModel>("Tessarune", 1, 0, "CaptionHearingModel",
                                                        {});
        qmlRegisterType<StreamingText>("Tessarune", 1, 0, "StreamingText");
        qmlRegisterUncreatableType<CaptionCommandsModel>("Tessarune", 1, 0, "CaptionCommandsModel",
                                                         {});
        qmlRegisterUncreatableType<CaptionStageModel>("Tessarune", 1, 0, "CaptionStageModel", {});
        qmlRegisterType<CaptionToolbarFit>("Tessarune", 1, 0, "CaptionToolbarFit");
        qmlRegisterType<MenuWindow>("Tessarune", 1, 0, "MenuWindow");
        qmlRegisterUncreatableType<CaptionToolbarModel>("Tessarune", 1, 0, "CaptionToolbarModel",
                                                        {});
        qmlRegisterUncreatableType<CaptionWindowModel>("Tessarune", 1, 0, "CaptionWindowModel", {});
        qmlRegisterUncreatableType<CaptionRowsModel>("Tessarune", 1, 0, "CaptionRowsModel", {});
        return true;
    }();
    Q_UNUSED(once);
}

CaptionWindow::CaptionWindow(CaptionWindowEnvironment environment)
    : environment_(std::move(environment)),
      model_(environment_),
      stage_(environment_),
      toolbar_(environment_),
      commands_(environment_, toolbar_),
      hearing_(environment_) {
    registerTypes();
    QQuickWindow::setDefaultAlphaBuffer(true);
    engine_.setInitialProperties({{"model", QVariant::fromValue(&model_)},
                                  {"stage", QVariant::fromValue(&stage_)},
                                  {"toolbar", QVariant::fromValue(&toolbar_)},
                                  {"commands", QVariant::fromValue(&commands_)},
                                  {"hearing", QVariant::fromValue(&hearing_)}});
    engine_.load(QUrl(QStringLiteral("qrc:/captions/CaptionWindow.qml")));
    if (engine_.rootObjects().isEmpty())
        qFatal("the caption window's files cannot be loaded");
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().front());
    // Queued, because a render thread may emit the signal.
    QObject::connect(
        window_, &QQuickWindow::frameSwapped, &model_, [this] { model_.setPainted(); },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    place_ = std::make_unique<WindowPlace>(*window_, environment_.store, "captionWindowPlace");
    place_->restore();
    announcer_ = std::make_unique<CaptionAnnouncer>(environment_, *window_);
}

CaptionWindow::~CaptionWindow() {
    // Qt deletes the items of removed rows later, but their animations must not outlive the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void CaptionWindow::show() {
    if (window_->windowStates().testFlag(Qt::WindowMinimized))
        window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

void CaptionWindow::hide() {
    window_->hide();
}

} // namespace tessarune
