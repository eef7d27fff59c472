#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tessarune {

/// The measured speeds of the speech models on this computer, stored beside them. Any thread;
/// nothing is cached.
class SpeechModelSpeeds {
  public:
    SpeechModelSpeeds(Host& host, ModelStore& store) : host_(host), store_(store) {}

    /// Seconds of work per second of the open line for a pass over live sound on this computer;
    /// `nullopt` if unknown or outdated.
    std::optional<double> lookRatio(const std::string& model) const;
    /// Whether a line is updated too seldom at this ratio.
    static bool isTooSlow(double lookRatio);

    /// Stores the average over so many passes.
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
