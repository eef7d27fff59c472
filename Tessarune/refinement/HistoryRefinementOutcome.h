#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

namespace tessarune {

/// The refined text could not be written (transcriptSidecarSaveFailed).
struct HistoryRefinementPersistenceError : std::runtime_error {
    explicit HistoryRefinementPersistenceError(const UUID& recording);
};

/// The outcome of a refinement. Texts can be shown; they are empty if there is nothing to say.
struct HistoryRefinementOutcome {
    enum class Status {
        finished,  ///< the refined text is saved; see `translation` for its translation
        deleted,   ///< the recording is gone
        cancelled, ///< with nothing to save; the former transcript is unchanged
        failed     ///< the former transcript is unchanged
    };
    enum class Translation {
        none, ///< none was wanted
        saved,
        cancelled, ///< the former one stays
        failed     ///< the former one stays
    };

    Status status = Status::failed;
    std::exception_ptr failure;
    std::string problem; ///< the failure's text
    Translation translation = Translation::none;
    std::string translationProblem;
    std::string model;             ///< the model that transcribed it
    std::int64_t sentences = 0;    ///< of the refined text
    std::int64_t keptOfFormer = 0; ///< of these, the sentences that only the former transcript had
    double heardSeconds = 0;
    std::string brokenOff; ///< why the sound could not be read to its end
};

} // namespace tessarune
