#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/ui/history/HistoryWindow.h"

#include <memory>

namespace tessarune {

/// The history window over the application, which outlives it. Main thread.
std::unique_ptr<HistoryWindow> makeHistoryWindow(Application& application);

} // namespace tessarune
