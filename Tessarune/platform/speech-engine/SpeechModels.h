#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineModel.h"

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

    SpeechModels(ModelStore& store, std::function<std::string()> choice,
                 std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                 double passInterval);

    /// The chosen model, or of those that are here the largest that has not been seen to be too
    /// slow on this computer. Throws std::runtime_error if there is none, ModelDamaged if what was
    /// chosen is no longer whole.
    StoredModel choose() const;

    /// The chosen model in memory; loads it the first time and keeps it. Throws as `choose`, and
    /// what MoonshineModel throws.
    std::shared_ptr<MoonshineModel> loaded();

    /// Remembers how long a pass over a line takes here, for the next choice.
    void observe(const std::string& model, double secondsPerPass, std::size_t passes);

  private:
    bool isTooSlow(const std::string& model) const;
    std::map<std::string, double> speeds() const;

    ModelStore& store_;
    std::function<std::string()> choice_;
    std::function<std::shared_ptr<const MoonshineLibrary>()> library_;
    double passInterval_;
    std::map<std::string, std::shared_ptr<MoonshineModel>> loaded_;
};

} // namespace tessarune
