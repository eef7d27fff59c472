#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tessarune {

/// Thrown if the refined text could not be written.
struct HistoryRefinementPersistenceError : std::runtime_error {
    explicit HistoryRefinementPersistenceError(const UUID& recording);
};

/// The outcome of a refinement. Texts can be shown to the user; a text that does not apply is
/// empty.
struct HistoryRefinementOutcome {
    enum class Status {
        finished,  ///< the refined text is saved; see `translation` for its translation
        deleted,   ///< the recording was deleted
        cancelled, ///< before a text was saved; the former transcript is unchanged
        failed     ///< the former transcript is unchanged
    };
    enum class Failure {
        none,
        nothingUnderstood, ///< the recogniser found no text
        sound,             ///< the file is missing, damaged or incomplete, or cannot be converted
        recogniser, ///< it cannot be loaded, takes no files, or failed; also any other failure
        disk        ///< a text could not be read or saved, or the data folder was not available
    };
    enum class Translation {
        none, ///< not wanted, or not possible
        saved,
        cancelled, ///< the former translation is unchanged
        failed     ///< the former translation is unchanged
    };

    Status status = Status::failed;
    Failure failure = Failure::none;
    std::string problem; ///< the failure's text
    Translation translation = Translation::none;
    std::string translationProblem;
    std::string model;             ///< the model that was used
    std::int64_t sentences = 0;    ///< of the refined text
    std::int64_t keptOfFormer = 0; ///< how many of `sentences` the former transcript supplied
    double heardSeconds = 0;
    std::string brokenOff; ///< why the sound could not be read to its end; empty if it could
};

} // namespace tessarune
