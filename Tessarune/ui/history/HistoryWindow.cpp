#include "Tessarune/ui/history/HistoryWindow.h"

#include "Tessarune/ui/controls/Controls.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Outside of any namespace, as Qt wants it; a static library's files are found only when asked
/// for.
static void useHistoryFiles() {
    Q_INIT_RESOURCE(history);
}

namespace tessarune {

namespace {

void registerHistoryTypes() {
    static const bool once = [] {
        useHistoryFiles();
        registerControls();
        qmlRegisterUncreatableType<HistoryListModel>("Tessarune", 1, 0, "HistoryListModel", {});
        qmlRegisterUncreatableType<HistoryTranscriptModel>("Tessarune", 1, 0,
                                                           "HistoryTranscriptModel", {});
        qmlRegisterUncreatableType<HistoryDetailModel>("Tessarune", 1, 0, "HistoryDetailModel", {});
        qmlRegisterUncreatableType<HistoryExportModel>("Tessarune", 1, 0, "HistoryExportModel", {});
        qmlRegisterUncreatableType<HistoryPlaybackModel>("Tessarune", 1, 0, "HistoryPlaybackModel",
                                                         {});
        qmlRegisterUncreatableType<HistoryWindowModel>("Tessarune", 1, 0, "HistoryWindowModel", {});
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace

HistoryWindow::HistoryWindow(HistoryWindowEnvironment environment)
    : environment_(std::move(environment)), model_(environment_) {
    registerHistoryTypes();
    engine_.setInitialProperties({{"model", QVariant::fromValue(&model_)}});
    engine_.load(QUrl(QStringLiteral("qrc:/history/HistoryWindow.qml")));
    if (engine_.rootObjects().isEmpty())
        qFatal("the history window's files cannot be loaded");
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().front());
}

HistoryWindow::~HistoryWindow() {
    // Rows that went are still to be deleted, and what moves in them must not outlive the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void HistoryWindow::show(const std::string& recording) {
    if (const auto id = UUID::parse(recording))
        model_.select(*id);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

} // namespace tessarune
