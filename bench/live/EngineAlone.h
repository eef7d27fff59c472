#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"

#include <filesystem>
#include <functional>

namespace tessarune {

/// Runs the engine without the program around it. Reads and converts the whole file first, then
/// gives its sound to the engine in the same batches and at the same times as in a session. Calls
/// `onListening` when the model is loaded and the sound begins. Calls `onResult` for each result,
/// on a separate queue. All else is on the main queue. Throws if the file or the engine fails.
Task<void> runEngineAlone(Host& host, SpeechEngine engine, std::filesystem::path file,
                          std::function<void()> onListening,
                          std::function<void(const SpeechResult&)> onResult);

} // namespace tessarune
