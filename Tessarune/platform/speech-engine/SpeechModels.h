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
    std::uint64_t bytes; ///< about, with the files for word times
};

/// The memory of this computer. Any thread.
std::uint64_t memoryBytesOfComputer();

/// Which speech models exist, which one to use, and the loaded ones.
///
/// `choose` and `loadForFiles` are for any thread; `loaded` and `speeds` are confined to the
/// engine's worker queue.
class SpeechModels {
  public:
    /// The choice in place of a model's name.
    static constexpr std::string_view automatic = "automatic";
    /// The model that is always offered.
    static constexpr std::string_view smallest = "tiny-en";
    /// All models that can be chosen, the smallest first.
    static const std::vector<OfferedSpeechModel>& offered();

    SpeechModels(Host& host, ModelStore& store, std::function<std::string()> choice,
                 std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                 double passInterval, std::uint64_t memoryBytes = memoryBytesOfComputer());

    /// The chosen model, or the largest installed one that was not too slow on this computer
    /// lately. Throws std::runtime_error if there is none, ModelDamaged if the chosen one is
    /// damaged.
    StoredModel choose() const;

    /// The chosen model in memory; loaded once and kept. Throws like `choose` and MoonshineModel.
    std::shared_ptr<MoonshineModel> loaded();

    /// A separate model for recordings, where speed matters little: the named one, or for
    /// "automatic" the largest intact one that fits this computer's memory, at least the smallest.
    /// Throws like `loaded`.
    std::shared_ptr<MoonshineModel> loadForFiles(const std::string& model) const;

    /// The measurements for the next choice.
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
