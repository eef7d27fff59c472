#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/AssetInventory.h"
#include "Tessarune/speech/SpeechAnalyzer.h"
#include "TessaruneCore/host/Host.h"

namespace tessarune {

/// What recognition needs from the computer and the program around it. What is named by reference
/// outlives everything that was made with it.
struct SpeechPlatform {
    Host& host;
    SpeechEngine engine;
    AssetInventory& assets;
    MakeAudioConverter makeConverter;
    TessaruneFileLogger& logger;
};

} // namespace tessarune
