#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/ui/settings/SettingsWindow.h"

#include <memory>

namespace tessarune {

/// The settings window over the application and its session, which outlive it. Main thread.
std::unique_ptr<SettingsWindow> makeSettingsWindow(Application& application,
                                                   ListeningSession& session);

} // namespace tessarune
