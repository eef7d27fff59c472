#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"

#include <filesystem>
#include <functional>

namespace tessarune {

/// Runs the engine without the program around it. It receives the sound of a file, which was read
/// and converted before, in the same batches and at the same times as in a session. Calls
/// `onListening` when the model is loaded and the sound begins, and `onResult` for each result, on
/// a separate queue. Main queue. Throws.
Task<void> runEngineAlone(Host& host, SpeechEngine engine, std::filesystem::path file,
                          std::function<void()> onListening,
                          std::function<void(const SpeechResult&)> onResult);

} // namespace tessarune
