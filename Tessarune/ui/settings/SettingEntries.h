#pragma once

#include "Tessarune/shell/AppSettings.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class SettingsPane {
    recognition,
    translation,
    captions,
    recording,
    shortcuts,
    advanced,
    about
};

constexpr SettingsPane settingsPanes[] = {SettingsPane::recognition, SettingsPane::translation,
                                          SettingsPane::captions,    SettingsPane::recording,
                                          SettingsPane::shortcuts,   SettingsPane::advanced,
                                          SettingsPane::about};

/// The pane's name in QML.
std::string_view name(SettingsPane pane);
/// The pane's heading, as a localisation key.
std::string_view title(SettingsPane pane);

/// The control that changes a setting.
enum class SettingControl {
    toggle,
    choice,
    number,
    color,
    text,
    /// The pane has its own view for the setting; a search result links to the pane.
    elsewhere,
};

/// The place, title and control of one setting in the window.
struct SettingEntry {
    /// The range of a number's slider, and the format of the text beside it. The text shows the
    /// value even outside the range.
    struct Scale {
        double from = 0;
        double to = 100;
        double step = 1;
        std::string_view format; ///< localisation key with one %@
    };

    SettingsPane pane = SettingsPane::recognition;
    std::string_view section; ///< the heading above the setting; localisation key
    std::string_view title;   ///< localisation key
    AnySetting* setting = nullptr;
    SettingControl control = SettingControl::toggle;
    Scale scale{};
    /// Returns the localised name of a choice. Null if the choice's own text is shown.
    std::function<std::string(std::string_view choice)> choiceName = {};
    /// The setting has no effect and cannot be changed while `needs` is false. Null if the setting
    /// always has an effect.
    const Setting<bool>* needs = nullptr;
    /// Returns a localised description to show in place of the setting's info. Null if the info is
    /// shown.
    std::function<std::string()> about = {};

    std::string aboutText() const;
    /// Whether a search for this text finds the setting.
    bool matches(std::string_view query) const;
};

/// The settings that the window can change, in its order. The entries point into `settings`, which
/// must outlive them.
std::vector<SettingEntry> settingEntries(AppSettings& settings);

} // namespace tessarune
