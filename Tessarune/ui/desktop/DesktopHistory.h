#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>

namespace tessarune {

/// Creates the history window. All references must outlive it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound,
                                                 const LiveTranscriptStore& session,
                                                 Desktop& desktop);

} // namespace tessarune
