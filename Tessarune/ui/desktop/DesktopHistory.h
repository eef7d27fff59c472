#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>
#include <string>

namespace tessarune {

/// Takes the data folder, unless this program holds it already: only its holder may change
/// recordings and diagnostics runs. Returns why that failed, for the user; empty on success. Main
/// thread.
std::string problemOfChange(Application& application);

/// Creates the history window. All references must outlive it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound,
                                                 const LiveTranscriptStore& session,
                                                 Desktop& desktop);

} // namespace tessarune
