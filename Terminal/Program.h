#pragma once

#include "Terminal/TerminalOptions.h"
#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/SpeechModelInventory.h"
#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"
#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/OverridingUserDefaults.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/SpeechPlatform.h"

#include <memory>

namespace tessarune {

/// The real things that the terminal program works with, made once and in the order in which they
/// need each other. Main queue.
struct Program {
    Program();

    LoopHost host;
    PosixFileSystem files;
    TessarunePaths paths;
    JSONUserDefaults storedDefaults;
    OverridingUserDefaults defaults;
    AppSettings settings;
    TessaruneFileLogger logger;
    ModelStore models;
    ModelInstaller installer;
    SpeechModelInventory speechModels;
    TranslationModelInventory translationModels;
    std::shared_ptr<OfflineTranslationService> translation;
    NotificationCenter notifications;
    RecordingCatalog catalog;
    AudioExporter exporter;
    RecordingAudioCompressor compressor;

    /// What a recogniser works with. The choice of the model is that of this moment.
    SpeechPlatform speechPlatform();

    /// What the log says about this program and computer when it begins.
    LogFields bootstrapFields() const;

    /// A setting for this run alone.
    void override(AnySetting& setting, SettingValue value);
};

/// Runs what the user asked for, and gives the status to end with.
int run(Program& program, const TerminalOptions& options);

} // namespace tessarune
