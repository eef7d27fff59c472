#include "Tessarune/ui/history/HistoryWindow.h"

#include "Tessarune/ui/controls/Controls.h"
#include "Tessarune/ui/controls/ScreenFit.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Registers the files of this static library. Qt requires these macros outside any namespace.
static void useHistoryFiles() {
    Q_INIT_RESOURCE(history);
    Q_INIT_RESOURCE(qmlcache_history);
}

namespace tessarune {

namespace {

/// Registers a class of models with QML, so that properties can have its type.
template <typename Model>
void offer(const char* name) {
    qmlRegisterUncreatableType<Model>("Tessarune", 1, 0, name, {});
}

void registerHistoryTypes() {
    static const bool once = [] {
        useHistoryFiles();
        registerControls();
        offer<HistoryListModel>("HistoryListModel");
        offer<HistoryTranscriptModel>("HistoryTranscriptModel");
        offer<HistoryDetailModel>("HistoryDetailModel");
        offer<HistoryExportModel>("HistoryExportModel");
        offer<HistoryPlaybackModel>("HistoryPlaybackModel");
        offer<HistoryImportsModel>("HistoryImportsModel");
        offer<HistoryRefinementModel>("HistoryRefinementModel");
        offer<HistoryWordsModel>("HistoryWordsModel");
        offer<VocabularyModel>("VocabularyModel");
        offer<WordListModel>("WordListModel");
        offer<WordCardModel>("WordCardModel");
        offer<UsageModel>("UsageModel");
        offer<HistoryWindowModel>("HistoryWindowModel");
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
    new ScreenFit(*window_);
    QObject::connect(window_, &QWindow::visibleChanged, &model_, [this](bool isVisible) {
        if (!isVisible)
            model_.dismissMessage(); // carries out deletions that could still be undone
    });
    // A long export may end after the window was closed.
    QObject::connect(
        model_.exports(), &HistoryExportModel::ended, window_, [this](const QString& message) {
            if (!window_->isVisible() || window_->windowStates().testFlag(Qt::WindowMinimized))
                environment_.notify(message.toStdString());
        });
    QObject::connect(window_, &QWindow::activeChanged, &model_, [this] {
        if (window_->isActive())
            model_.refresh();
    });
}

HistoryWindow::~HistoryWindow() {
    // Qt deletes the items of removed rows later, but their animations must not outlive the engine.
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
