#pragma once

#include <string>

/// How a transcript that could not be saved is shown. Pure.
namespace tessarune::LiveTranscriptPersistencePresentationState {

/// Puts the failure into the status text. True if there was one.
bool apply(bool transcriptPersisted, std::string& statusMessage);

} // namespace tessarune::LiveTranscriptPersistencePresentationState
