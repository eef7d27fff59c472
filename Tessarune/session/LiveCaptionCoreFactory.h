#pragma once

#include "Tessarune/session/CaptionClock.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/CaptionCore.h"

namespace tessarune::LiveCaptionCoreFactory {

/// A core that asks `settings` whenever it needs a value, so that a change reaches a running
/// session at once. An unknown recognition option gives a recogniser that promises nothing. Main
/// queue; the host and the settings outlive the core.
CaptionCore make(Host& host, const AppSettings& settings);
/// The same on a session's clock, which outlives the core, too.
CaptionCore make(Host& host, CaptionClock& clock, const AppSettings& settings);

/// What that core works with now.
CaptionCore::Config config(const AppSettings& settings);
EngineCapabilities capabilities(const AppSettings& settings);

} // namespace tessarune::LiveCaptionCoreFactory
