#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"
#include "Tessarune/platform/speech-engine/RecognitionSession.h"
#include "Tessarune/speech/SpeechAnalyzer.h"

#include <functional>
#include <string>

namespace tessarune {

/// The recogniser of this computer. Nothing is loaded before an analyzer is prepared; what is
/// missing then (library, model) is the failure of that operation. Models stay loaded as long as a
/// copy of the result lives; `host` and `store` must outlive them.
///
/// `modelChoice` is asked at each preparation, on the worker queue: "automatic" or a model's name.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice);

/// As above with the parts that a test replaces.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice,
                              std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                              RecognitionPolicy policy);

} // namespace tessarune
