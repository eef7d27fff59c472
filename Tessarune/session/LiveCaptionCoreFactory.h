#pragma once

#include "Tessarune/session/CaptionClock.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/CaptionCore.h"

namespace tessarune::LiveCaptionCoreFactory {

/// A core that reads `settings` at each use, so that a change reaches a running session at once. An
/// unknown recognition option means a recogniser without any capabilities. Main queue; the host and
/// the settings outlive the core.
CaptionCore make(Host& host, const AppSettings& settings);
/// The same on a session's clock, which must also outlive the core.
CaptionCore make(Host& host, CaptionClock& clock, const AppSettings& settings);

/// The configuration that such a core uses now.
CaptionCore::Config config(const AppSettings& settings);
EngineCapabilities capabilities(const AppSettings& settings);

} // namespace tessarune::LiveCaptionCoreFactory
