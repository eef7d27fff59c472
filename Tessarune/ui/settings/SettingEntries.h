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

/// The pane's word in QML.
std::string_view name(SettingsPane pane);
/// The pane's heading, as a localisation key.
std::string_view title(SettingsPane pane);

/// What changes a setting.
enum class SettingControl {
    toggle,
    choice,
    number,
    color,
    text,
    /// The pane has a view of its own for it; a search leads there.
    elsewhere,
};

/// How one setting stands in the window: where, under which title, and with which control.
struct SettingEntry {
    /// A number's scale in the window. Values outside of it are shown as they are.
    struct Scale {
        double from = 0;
        double to = 100;
        double step = 1;
        std::string_view format; ///< localisation key with one %@
    };

    SettingsPane pane = SettingsPane::recognition;
    std::string_view section; ///< the heading that it stands under; localisation key
    std::string_view title;   ///< localisation key
    AnySetting* setting = nullptr;
    SettingControl control = SettingControl::toggle;
    Scale scale{};
    /// The localised name of a choice; absent: the choice's own text.
    std::function<std::string(std::string_view choice)> choiceName = {};
    /// Without it the setting has no effect, and cannot be changed; null: always has.
    const Setting<bool>* needs = nullptr;
    /// What it does, localised, where its info is not what to say; absent: as its info says.
    std::function<std::string()> about = {};

    std::string aboutText() const;
    /// Whether the user who types this means this setting.
    bool matches(std::string_view query) const;
};

/// The settings that a user can change in the window, in its order. They keep pointing into
/// `settings`.
std::vector<SettingEntry> settingEntries(AppSettings& settings);

/// Why a setting is missing there: nothing on this system depends on it yet.
bool isWithoutEffect(const AppSettings& settings, const AnySetting& setting);

} // namespace tessarune
