#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"

#include <filesystem>
#include <functional>

namespace tessarune {

/// The engine without the program around it: the sound of a file, read and converted beforehand, in
/// the batches and at the times in which a session gives it. `onListening` is called when the model
/// is loaded and the sound begins, `onResult` for each result on a queue of their own. Main queue.
/// Throws.
Task<void> runEngineAlone(Host& host, SpeechEngine engine, std::filesystem::path file,
                          std::function<void()> onListening,
                          std::function<void(const SpeechResult&)> onResult);

} // namespace tessarune
