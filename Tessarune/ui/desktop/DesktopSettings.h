#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/shell/Desktop.h"
#include "Tessarune/ui/settings/SettingsWindow.h"

#include <memory>
#include <string>

namespace tessarune {

/// Creates the settings window. All references must outlive it. Main thread.
std::unique_ptr<SettingsWindow> makeSettingsWindow(Application& application,
                                                   ListeningSession& session,
                                                   const Published<bool>& reducesMotion,
                                                   const Published<std::string>& downloadTrouble,
                                                   Desktop& desktop);

} // namespace tessarune
