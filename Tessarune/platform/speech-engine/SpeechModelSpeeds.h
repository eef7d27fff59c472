#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tessarune {

/// How fast the speech models have been seen to be on this computer, kept beside them. Any
/// thread; nothing is cached.
class SpeechModelSpeeds {
  public:
    SpeechModelSpeeds(Host& host, ModelStore& store) : host_(host), store_(store) {}

    /// Seconds of work that a look at live sound costs here for each second of the line that is
    /// open; nothing where that is not known, or no longer.
    std::optional<double> lookRatio(const std::string& model) const;
    /// At this ratio a line is shown anew too seldom.
    static bool isTooSlow(double lookRatio);

    /// Remembers the average over so many looks.
    void observe(const std::string& model, double lookRatio, std::size_t passes);

  private:
    struct Speed {
        double lookRatio;
        double measuredAt; ///< wall clock
    };

    std::filesystem::path file() const;
    std::map<std::string, Speed> read() const;

    Host& host_;
    ModelStore& store_;
};

} // namespace tessarune
