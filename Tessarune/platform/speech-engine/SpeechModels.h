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

/// A speech model that the program offers, installed or not.
struct OfferedSpeechModel {
    std::string_view name;
    moonshine::Architecture architecture;
    std::uint64_t bytes; ///< of its files, approximate
};

/// The memory of this computer; 0 if unknown. Any thread.
std::uint64_t memoryBytesOfComputer();

/// Knows which speech models exist, chooses one, and keeps the loaded ones.
///
/// `choose` and `loadForFiles`: any thread. `loaded` and `speeds`: only the engine's worker queue.
class SpeechModels {
  public:
    /// Leaves the choice of the model to the program.
    static constexpr std::string_view automatic = "automatic";
    /// The smallest offered model.
    static constexpr std::string_view smallest = "tiny-en";
    /// All models that can be chosen, the smallest first.
    static const std::vector<OfferedSpeechModel>& offered();

    SpeechModels(Host& host, ModelStore& store, std::function<std::string()> choice,
                 std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                 double passInterval, std::uint64_t memoryBytes = memoryBytesOfComputer());

    /// The chosen model, or for "automatic" the largest intact one that was not too slow on this
    /// computer lately, or else the smallest installed one. Throws std::runtime_error if there is
    /// none.
    StoredModel choose() const;

    /// The chosen model in memory; loaded once and kept. Throws like `choose`, and ModelDamaged and
    /// others like MoonshineModel.
    std::shared_ptr<MoonshineModel> loaded();

    /// Loads a separate model for recordings, for which speed matters little: the named one, or for
    /// "automatic" the largest intact one that fits this computer's memory, or else the smallest
    /// installed one. Throws like `loaded`.
    std::shared_ptr<MoonshineModel> loadForFiles(const std::string& model) const;

    /// The measured speeds that `choose` uses.
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
