#include "Tessarune/session/LiveSessionControlTrigger.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

using Trigger = LiveSessionControlTrigger;

Trigger Trigger::programmatic() {
    return {"programmatic", "internal", false, {}};
}

Trigger Trigger::keyboardShortcut() {
    return {"keyboard.shortcut.toggleRecord",
            "keyboard",
            true,
            {{"shortcut", "toggleRecord"}, {"key", "space"}}};
}

Trigger Trigger::toolbarPill() {
    return {"toolbar.listeningPill", "toolbar", true, {}};
}

Trigger Trigger::contextMenu() {
    return {"menu.context.toggleRecord", "menu", true, {}};
}

Trigger Trigger::dockReopen() {
    return {"dock.reopen.toggleRecord", "dock", true, {}};
}

Trigger Trigger::subtitleViewDisappear() {
    return {"subtitle.view.disappear", "window", false, {}};
}

Trigger Trigger::subtitleWindowClose() {
    return {"window.subtitle.close", "window", true, {}};
}

Trigger Trigger::applicationWillTerminate() {
    return {"app.willTerminate", "app", false, {}};
}

Trigger Trigger::applicationShouldTerminate() {
    return {"app.shouldTerminate", "app", true, {}};
}

Trigger Trigger::sourceSwitch() {
    return {"settings.audioSource.switch", "settings", true, {}};
}

Trigger Trigger::pendingRestart() {
    return {"session.pendingRestart", "internal", false, {}};
}

Trigger Trigger::audioInactivityTimeout(double idleSeconds, double timeoutSeconds) {
    return {"audio.inactivity.timeout",
            "automatic",
            false,
            {{"idleSeconds", Text::fixed(idleSeconds, 3)},
             {"timeoutSeconds", Text::fixed(timeoutSeconds, 3)}}};
}

LogFields Trigger::logFields() const {
    LogFields fields{
        {"trigger", token}, {"triggerCategory", category}, {"triggerUserInitiated", userInitiated}};
    for (const auto& [key, value] : details)
        fields.add("trigger." + key, value);
    return fields;
}

} // namespace tessarune
