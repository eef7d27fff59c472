#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>

namespace tessarune {

/// Holds the data folder: only its holder may change recordings and diagnostics runs. Main thread.
DataFolderLease leaseDataFolder(Application& application);

/// Creates the history window. All references must outlive it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound,
                                                 const LiveTranscriptStore& session,
                                                 Desktop& desktop);

} // namespace tessarune
