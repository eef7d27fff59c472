#include "Tessarune/ui/settings/SettingsWindow.h"

#include "Tessarune/ui/captions/CaptionWindow.h"
#include "Tessarune/ui/controls/Controls.h"
#include "Tessarune/ui/controls/ScreenFit.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <utility>

/// Registers the files of this static library. Qt requires these macros outside any namespace.
static void useSettingsFiles() {
    Q_INIT_RESOURCE(settings);
    Q_INIT_RESOURCE(qmlcache_settings);
}

namespace tessarune {

namespace {

void registerSettingsTypes() {
    static const bool once = [] {
        useSettingsFiles();
        registerControls();
        CaptionWindow::registerTypes();
        const auto add = [](auto* typeTag, const char* name) {
            qmlRegisterUncreatableType<std::remove_pointer_t<decltype(typeTag)>>("Tessarune", 1, 0,
                                                                                 name, {});
        };
        add(static_cast<AboutModel*>(nullptr), "AboutModel");
        add(static_cast<CaptionPreview*>(nullptr), "CaptionPreview");
        add(static_cast<DiagnosticsRunsModel*>(nullptr), "DiagnosticsRunsModel");
        add(static_cast<ProfilesModel*>(nullptr), "ProfilesModel");
        add(static_cast<ResourcesModel*>(nullptr), "ResourcesModel");
        add(static_cast<SettingRowsModel*>(nullptr), "SettingRowsModel");
        add(static_cast<SettingsWindowModel*>(nullptr), "SettingsWindowModel");
        add(static_cast<ShortcutsModel*>(nullptr), "ShortcutsModel");
        add(static_cast<TranslationTestModel*>(nullptr), "TranslationTestModel");
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace

SettingsWindow::SettingsWindow(SettingsWindowEnvironment environment)
    : environment_(std::move(environment)),
      model_(environment_),
      models_(environment_.host, environment_.settings.speechModel,
              SettingsResources::speechModels(environment_.speechModels,
                                              environment_.speechModelSpeed)),
      languages_(environment_.host, environment_.settings.translationTargetLanguage,
                 SettingsResources::languages(environment_.languages)),
      test_(environment_.settings, environment_.translationTest),
      preview_(environment_),
      shortcuts_(environment_.settings),
      profiles_(environment_),
      runs_(environment_) {
    registerSettingsTypes();
    QObject::connect(&test_, &TranslationTestModel::ended, &languages_, &ResourcesModel::refresh);
    observations_.follow(environment_.settings.changesFromElsewhere, [this] {
        models_.refresh();
        languages_.refresh();
    });
    observations_.follow(environment_.downloadTrouble, [this] {
        models_.tellTrouble(*environment_.downloadTrouble);
        languages_.tellTrouble(*environment_.downloadTrouble);
    });
    engine_.setInitialProperties({{"model", QVariant::fromValue(&model_)},
                                  {"models", QVariant::fromValue(&models_)},
                                  {"languages", QVariant::fromValue(&languages_)},
                                  {"test", QVariant::fromValue(&test_)},
                                  {"preview", QVariant::fromValue(&preview_)},
                                  {"shortcuts", QVariant::fromValue(&shortcuts_)},
                                  {"profiles", QVariant::fromValue(&profiles_)},
                                  {"runs", QVariant::fromValue(&runs_)},
                                  {"about", QVariant::fromValue(&about_)}});
    engine_.load(QUrl(QStringLiteral("qrc:/settings/SettingsWindow.qml")));
    if (engine_.rootObjects().isEmpty())
        qFatal("the settings window's files cannot be loaded");
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().front());
    new ScreenFit(*window_);
    place_ = std::make_unique<WindowPlace>(*window_, environment_.store, "settingsWindowPlace");
    place_->restore();
}

SettingsWindow::~SettingsWindow() {
    // Qt deletes the items of removed rows later, but their animations must not outlive the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void SettingsWindow::show(const std::string& pane) {
    model_.setPane(QString::fromStdString(pane));
    window_->show();
    window_->raise();
    window_->requestActivate();
}

} // namespace tessarune
