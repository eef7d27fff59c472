#pragma once

#include "Tessarune/ui/welcome/WelcomeWindow.h"
#include "tests/ui/StagedSettings.h"

#include <QAccessible>
#include <QQuickItem>
#include <memory>
#include <string>

namespace tessarune {

/// The page of the first start on a computer without a speech model. The test writes the captions
/// of the sample through `captions`.
class StagedWelcome {
  public:
    StagedWelcome() {
        for (SpeechModelState& model : models.models)
            model.isInstalled = false;
    }
    ~StagedWelcome() { window.reset(); }

    void open() {
        window = std::make_unique<WelcomeWindow>(
            WelcomeEnvironment{captions.host, captions.settings, models, languages, downloadTrouble,
                               [this] { return playSample(); },
                               [this] {
                                   ++closed;
                                   window->close();
                               }},
            sample);
        window->show();
    }
    WelcomeModel& model() { return *window->window().property("model").value<WelcomeModel*>(); }
    /// Presses a button as a screen reader does.
    void press(const QString& button) {
        QAccessible::queryAccessibleInterface(window->window().findChild<QQuickItem*>(button))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
    }

    StagedCaptions captions;
    CaptionWindowEnvironment sample = captions.environment();
    ScriptedSpeechModels models{captions.host};
    ScriptedLanguages languages;
    Published<std::string> downloadTrouble;
    int samples = 0;
    std::string sampleProblem; // empty: the sample can be played
    int closed = 0;
    std::unique_ptr<WelcomeWindow> window;

  private:
    Task<std::string> playSample() {
        ++samples;
        co_return sampleProblem;
    }
};

} // namespace tessarune
