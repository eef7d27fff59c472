#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>
#include <string>

namespace tessarune {

/// Makes this program the one that may change recordings and runs, if it is not so already;
/// otherwise says why it is not. Main thread.
std::string problemOfChange(Application& application);

/// The history window over the application, its sound, the session and the desktop, which outlive
/// it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound,
                                                 const LiveTranscriptStore& session,
                                                 Desktop& desktop);

} // namespace tessarune
