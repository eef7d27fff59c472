#include "Tessarune/ui/settings/SettingsWindow.h"

#include "Tessarune/ui/controls/Controls.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Outside of any namespace, as Qt wants it; a static library's files are found only when asked
/// for.
static void useSettingsFiles() {
    Q_INIT_RESOURCE(settings);
}

namespace tessarune {

namespace {

void registerSettingsTypes() {
    static const bool once = [] {
        useSettingsFiles();
        registerControls();
        qmlRegisterUncreatableType<SettingRowsModel>("Tessarune", 1, 0, "SettingRowsModel", {});
        qmlRegisterUncreatableType<SettingsWindowModel>("Tessarune", 1, 0, "SettingsWindowModel",
                                                        {});
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace

SettingsWindow::SettingsWindow(SettingsWindowEnvironment environment)
    : environment_(std::move(environment)), model_(environment_) {
    registerSettingsTypes();
    engine_.setInitialProperties({{"model", QVariant::fromValue(&model_)}});
    engine_.load(QUrl(QStringLiteral("qrc:/settings/SettingsWindow.qml")));
    if (engine_.rootObjects().isEmpty())
        qFatal("the settings window's files cannot be loaded");
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().front());
}

SettingsWindow::~SettingsWindow() {
    // Rows that went are still to be deleted, and what moves in them must not outlive the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void SettingsWindow::show(const std::string& pane) {
    model_.setPane(QString::fromStdString(pane));
    window_->show();
    window_->raise();
    window_->requestActivate();
}

} // namespace tessarune
