#pragma once

#include "TessaruneCore/diagnostics/LogFields.h"

#include <map>
#include <string>

namespace tessarune {

/// The cause of a start or a stop, for logs and the diagnostics run. A plain value.
struct LiveSessionControlTrigger {
    std::string token;
    std::string category;
    bool userInitiated = false;
    std::map<std::string, std::string> details;

    static LiveSessionControlTrigger programmatic();
    static LiveSessionControlTrigger keyboardShortcut();
    static LiveSessionControlTrigger toolbarPill();
    static LiveSessionControlTrigger contextMenu();
    static LiveSessionControlTrigger dockReopen();
    static LiveSessionControlTrigger subtitleViewDisappear();
    static LiveSessionControlTrigger subtitleWindowClose();
    static LiveSessionControlTrigger applicationWillTerminate();
    static LiveSessionControlTrigger applicationShouldTerminate();
    static LiveSessionControlTrigger sourceSwitch();
    static LiveSessionControlTrigger pendingRestart();
    static LiveSessionControlTrigger audioInactivityTimeout(double idleSeconds,
                                                            double timeoutSeconds);

    /// "trigger", "triggerCategory", "triggerUserInitiated", and "trigger." with each detail's key.
    LogFields logFields() const;

    bool operator==(const LiveSessionControlTrigger&) const = default;
};

} // namespace tessarune
