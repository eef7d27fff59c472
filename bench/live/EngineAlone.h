#pragma once

#include "Tessarune/speech/SpeechPlatform.h"

#include <filesystem>
#include <functional>

namespace tessarune {

/// The engine without the program around it: the sound of a file, read and converted beforehand, in
/// the batches and at the times in which a session gives it. Its results are dropped. `onListening`
/// is called when the model is loaded and the sound begins. Main queue. Throws.
Task<void> runEngineAlone(SpeechPlatform platform, std::filesystem::path file,
                          std::function<void()> onListening);

} // namespace tessarune
