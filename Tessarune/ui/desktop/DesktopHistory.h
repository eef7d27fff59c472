#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>

namespace tessarune {

/// The history window over the application and its sound, which outlive it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application, DesktopSound& sound);

} // namespace tessarune
