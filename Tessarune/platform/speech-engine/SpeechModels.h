#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineModel.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A speech model that the program offers, whether it is here or not.
struct OfferedSpeechModel {
    std::string_view name;
    moonshine::Architecture architecture;
    std::uint64_t bytes; ///< about, with the files for word times
};

/// Which speech models there are, which one to take, and those that are loaded.
///
/// `choose` is for any thread; `loaded` and `observe` are confined to the engine's worker queue.
class SpeechModels {
  public:
    /// What can be chosen instead of a model's name.
    static constexpr std::string_view automatic = "automatic";
    /// The model that is always there.
    static constexpr std::string_view smallest = "tiny-en";
    /// All models that can be chosen, the smallest first.
    static const std::vector<OfferedSpeechModel>& offered();

    SpeechModels(Host& host, ModelStore& store, std::function<std::string()> choice,
                 std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                 double passInterval);

    /// The chosen model, or of those that are here the largest that has not been seen to be too
    /// slow on this computer lately. Throws std::runtime_error if there is none, ModelDamaged if
    /// what was chosen is no longer whole.
    StoredModel choose() const;

    /// The chosen model in memory; loads it the first time and keeps it. Throws as `choose`, and
    /// what MoonshineModel throws.
    std::shared_ptr<MoonshineModel> loaded();

    /// Remembers for the next choice how many seconds of work a look at live sound costs here for
    /// each second of the line that is open, on average over so many looks.
    void observe(const std::string& model, double lookRatio, std::size_t passes);

  private:
    struct Speed {
        double lookRatio;
        double measuredAt; ///< wall clock
    };

    bool isTooSlow(const std::string& model) const;
    std::filesystem::path speedsFile() const;
    std::map<std::string, Speed> speeds() const;

    Host& host_;
    ModelStore& store_;
    std::function<std::string()> choice_;
    std::function<std::shared_ptr<const MoonshineLibrary>()> library_;
    double passInterval_;
    std::map<std::string, std::shared_ptr<MoonshineModel>> loaded_;
};

} // namespace tessarune
