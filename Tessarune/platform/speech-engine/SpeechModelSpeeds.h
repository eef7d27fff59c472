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

    /// The cost of a pass over live sound on this computer, in seconds of work per second of the
    /// open line; `nullopt` if unknown or outdated.
    std::optional<double> lookRatio(const std::string& model) const;
    /// Whether lines are updated too rarely at this ratio.
    static bool isTooSlow(double lookRatio);

    /// Stores the average ratio over this many passes; ignores it if they are too few. A failure is
    /// only logged.
    void observe(const std::string& model, double lookRatio, std::size_t passes);

  private:
    struct Speed {
        double lookRatio;
        double measuredAt; ///< seconds of the wall clock
    };

    std::filesystem::path file() const;
    std::map<std::string, Speed> read() const;

    Host& host_;
    ModelStore& store_;
};

} // namespace tessarune
