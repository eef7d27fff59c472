#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/refinement/SpeechAnalyzerFileRecords.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/SpeechAnalyzer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// Thrown if the recogniser finds no text or cannot transcribe files.
class SpeechAnalyzerFileTranscriberError : public std::runtime_error {
  public:
    enum class Kind {
        emptyResult, ///< no text was recognised
        noFileMode   ///< the recogniser has no file mode
    };
    explicit SpeechAnalyzerFileTranscriberError(Kind kind);
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Transcribes a file with the recogniser in file mode, in blocks, so that only a little sound is
/// in memory. Reading and decoding happen on `reader`, the recogniser's work on a queue of its own.
/// Main queue; all references must outlive the transcriptions.
class SpeechAnalyzerFileTranscriber {
  public:
    /// Seconds of sound per block.
    static constexpr double blockSeconds = 5;

    struct Environment {
        Host& host;
        Executor reader;
        SpeechEngine engine;
        OpenMediaFile openMedia;
        MakeAudioConverter makeConverter;
        TessaruneFileLogger& logger;
    };
    struct Control {
        std::string model; ///< "automatic", or the name of a model
        /// Awaited before each block. It may delay the block, or end the transcription by throwing.
        std::function<Task<void>()> beforeBlock;
        /// Called after each block with the seconds heard so far and the duration that the file
        /// states.
        std::function<void(double heardSeconds, std::optional<double> duration)> progress;
        std::stop_token stop;
    };
    struct Transcription {
        SpeechAnalyzerFileTranscriptionResult result;
        std::string model;       ///< the model that was used
        double heardSeconds = 0; ///< the length of the sound that was read
        std::string brokenOff;   ///< why the file could not be read to its end; empty if it could
    };

    explicit SpeechAnalyzerFileTranscriber(Environment environment);

    /// Throws MediaFileError for a file that cannot be opened or breaks off before its first text.
    /// Also throws AudioConversionError, SpeechAnalyzerFileTranscriberError, CancellationError, and
    /// what `beforeBlock` and the recogniser throw.
    Task<Transcription> transcribe(std::string audioPath, std::string localeIdentifier,
                                   Control control,
                                   SpeechAnalyzerFileTranscriberDiagnostics diagnostics = {});

  private:
    const Environment environment_;
};

} // namespace tessarune
