#pragma once

#include "Tessarune/session/CaptionClock.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/CaptionCore.h"

namespace tessarune::LiveCaptionCoreFactory {

/// Makes a core that reads `settings` at each use, so that a change affects a running session at
/// once. An unknown recognition option counts as a recogniser without any capabilities. Main queue;
/// the host and the settings must outlive the core.
CaptionCore make(Host& host, const AppSettings& settings);
/// Like the above, on a session's clock, which must also outlive the core.
CaptionCore make(Host& host, CaptionClock& clock, const AppSettings& settings);

/// The configuration that such a core uses at the moment.
CaptionCore::Config config(const AppSettings& settings);
EngineCapabilities capabilities(const AppSettings& settings);

} // namespace tessarune::LiveCaptionCoreFactory
