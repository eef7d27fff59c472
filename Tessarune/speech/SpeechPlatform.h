#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/AssetInventory.h"
#include "Tessarune/speech/SpeechAnalyzer.h"
#include "TessaruneCore/host/Host.h"

namespace tessarune {

/// The services that recognition uses. The references outlive everything made with them.
struct SpeechPlatform {
    Host& host;
    SpeechEngine engine;
    AssetInventory& assets;
    MakeAudioConverter makeConverter;
    TessaruneFileLogger& logger;
};

} // namespace tessarune
