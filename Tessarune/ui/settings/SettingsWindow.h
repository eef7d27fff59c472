#pragma once

#include "Tessarune/ui/captions/WindowPlace.h"
#include "Tessarune/ui/settings/AboutModel.h"
#include "Tessarune/ui/settings/CaptionPreview.h"
#include "Tessarune/ui/settings/DiagnosticsRunsModel.h"
#include "Tessarune/ui/settings/ProfilesModel.h"
#include "Tessarune/ui/settings/ResourcesModel.h"
#include "Tessarune/ui/settings/SettingsWindowEnvironment.h"
#include "Tessarune/ui/settings/SettingsWindowModel.h"
#include "Tessarune/ui/settings/ShortcutsModel.h"
#include "Tessarune/ui/settings/TranslationTestModel.h"
#include "TessaruneCore/observation/Observations.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <memory>
#include <string>

namespace tessarune {

/// The window with the user's settings. Main thread; needs the application object.
class SettingsWindow {
  public:
    /// Loads the window without showing it. Ends the program if the window's own QML files cannot
    /// be loaded, because the user cannot repair that.
    explicit SettingsWindow(SettingsWindowEnvironment environment);
    ~SettingsWindow();
    SettingsWindow(const SettingsWindow&) = delete;

    /// Shows the window, raised and active, with the pane named `pane`. If no pane has this name,
    /// the window keeps the pane that was shown last.
    void show(const std::string& pane = {});
    QQuickWindow& window() { return *window_; }
    const DiagnosticsRunsModel& runs() const { return runs_; }
    SettingsWindowModel& model() { return model_; }
    ResourcesModel& models() { return models_; }
    ShortcutsModel& shortcuts() { return shortcuts_; }
    const CaptionPreview& preview() const { return preview_; }

  private:
    const SettingsWindowEnvironment environment_;
    SettingsWindowModel model_;
    ResourcesModel models_;
    ResourcesModel languages_;
    TranslationTestModel test_;
    CaptionPreview preview_;
    ShortcutsModel shortcuts_;
    ProfilesModel profiles_;
    DiagnosticsRunsModel runs_;
    AboutModel about_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // owned by the engine
    std::unique_ptr<WindowPlace> place_;
    Observations observations_;
};

} // namespace tessarune
