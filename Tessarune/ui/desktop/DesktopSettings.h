#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/settings/SettingsWindow.h"

#include <memory>

namespace tessarune {

/// Creates the settings window. All references must outlive it. Main thread.
std::unique_ptr<SettingsWindow> makeSettingsWindow(Application& application,
                                                   ListeningSession& session,
                                                   const Published<bool>& reducesMotion,
                                                   Desktop& desktop);

} // namespace tessarune
