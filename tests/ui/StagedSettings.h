#pragma once

#include "Tessarune/ui/settings/SettingsWindow.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/ui/StagedCaptions.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace tessarune {

/// Settings that another program changes, too.
class SharedUserDefaults final : public testing::MemoryUserDefaults {
  public:
    void observe(std::function<void()> onChange) override { changed = std::move(onChange); }

    std::function<void()> changed;
};

/// A settings window over what a script says there is.
class StagedSettings {
  public:
    ~StagedSettings() { window.reset(); }

    void open(const std::string& pane) {
        window = std::make_unique<SettingsWindow>(
            SettingsWindowEnvironment{captions.host, settings, captions.session, store,
                                      [this] { return problem; }, [this] { problem.clear(); }});
        window->show(pane);
    }
    /// The store was written by another program.
    void changedElsewhere() const { store.changed(); }

    StagedCaptions captions; ///< with host, session and application
    SharedUserDefaults store;
    AppSettings settings{store};
    std::string problem; ///< of the settings file
    std::unique_ptr<SettingsWindow> window;
};

} // namespace tessarune
