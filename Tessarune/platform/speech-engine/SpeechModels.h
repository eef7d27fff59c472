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

    /// The chosen model. For "automatic": the largest intact model that was not too slow on this
    /// computer lately; if there is none, the smallest installed model. Throws std::runtime_error
    /// if the chosen model, or any model at all, is missing.
    StoredModel choose() const;

    /// The chosen model in memory; loaded once and kept. Throws what `choose` and the constructor
    /// of MoonshineModel throw.
    std::shared_ptr<MoonshineModel> loaded();

    /// Loads `model` separately, for recordings, for which speed matters little. For "automatic":
    /// the largest intact model that fits this computer's memory; if there is none, the smallest
    /// installed model. Throws like `loaded`.
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
