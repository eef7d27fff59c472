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

/// What became of a refinement. Texts can be shown; they are empty where there is nothing to say.
struct HistoryRefinementOutcome {
    enum class Status {
        finished,  ///< the refined text is saved; of its translation `translation` tells
        deleted,   ///< the recording is gone
        cancelled, ///< before there was anything to save; the former transcript is whole
        failed     ///< the former transcript is whole
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
    std::string model;             ///< that transcribed
    std::int64_t sentences = 0;    ///< of the refined text
    std::int64_t keptOfFormer = 0; ///< of them those that only the former transcript had
    double heardSeconds = 0;
    std::string brokenOff; ///< why the sound could not be read to its end
};

} // namespace tessarune
