#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineModel.h"
#include "Tessarune/platform/speech-engine/SpeechModelSpeeds.h"
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

/// The memory of this computer. Any thread.
std::uint64_t memoryBytesOfComputer();

/// Which speech models there are, which one to take, and those that are loaded.
///
/// `choose` and `loadForFiles` are for any thread; `loaded` and `speeds` are confined to the
/// engine's worker queue.
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
                 double passInterval, std::uint64_t memoryBytes = memoryBytesOfComputer());

    /// The chosen model, or of those that are here the largest that has not been seen to be too
    /// slow on this computer lately. Throws std::runtime_error if there is none, ModelDamaged if
    /// what was chosen is no longer whole.
    StoredModel choose() const;

    /// The chosen model in memory; loads it the first time and keeps it. Throws as `choose`, and
    /// what MoonshineModel throws.
    std::shared_ptr<MoonshineModel> loaded();

    /// A model of its own for recordings, where time matters little: the named one, or
    /// where `model` is "automatic" the largest that is here whole and that fits the memory of this
    /// computer, the smallest in any case. Throws as `loaded`.
    std::shared_ptr<MoonshineModel> loadForFiles(const std::string& model) const;

    /// What the next choice goes by.
    SpeechModelSpeeds& speeds() { return speeds_; }

  private:
    StoredModel chooseForFiles(const std::string& wanted) const;
    StoredModel named(const std::string& name) const;

    ModelStore& store_;
    std::function<std::string()> choice_;
    std::function<std::shared_ptr<const MoonshineLibrary>()> library_;
    double passInterval_;
    std::uint64_t memoryBytes_;
    SpeechModelSpeeds speeds_;
    std::map<std::string, std::shared_ptr<MoonshineModel>> loaded_;
};

} // namespace tessarune
