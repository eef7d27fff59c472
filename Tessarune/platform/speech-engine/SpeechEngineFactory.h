#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"
#include "Tessarune/platform/speech-engine/RecognitionSession.h"
#include "Tessarune/speech/SpeechAnalyzer.h"

#include <functional>
#include <string>

namespace tessarune {

/// The recogniser of this computer. Loads nothing before an analyzer is prepared; a missing library
/// or model is the failure of that operation. Models stay loaded while a copy of the result lives;
/// `host` and `store` must outlive them.
///
/// `modelChoice` is called at each preparation, on the worker queue: "automatic" or a model's name.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice);

/// The same with replaceable parts, for tests.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice,
                              std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                              RecognitionPolicy policy);

} // namespace tessarune
