#pragma once

#include "Tessarune/app/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// The target language of a run: that of the command line, else that of the settings, also when
/// they change. Main queue; the application outlives it.
class RunTranslation {
  public:
    /// `wanted` comes from the command line: a language, empty for none, absent for the settings'.
    /// `say` receives messages to the user; it may be empty.
    RunTranslation(Application& application, std::optional<std::string> wanted,
                   std::function<void(const std::string&)> say);
    ~RunTranslation();
    RunTranslation(const RunTranslation&) = delete;

    /// Adjusts the settings of this run, so that the session does not retry impossible
    /// translations. Returns the target, empty if there is none. Throws RunFailure if the command
    /// line's is unavailable.
    std::string choose();
    /// From now on calls `onChange` when the settings have another target.
    void follow(std::function<void(std::string target)> onChange);

  private:
    /// Backend and target as stored.
    using Stored = std::pair<std::optional<SettingValue>, std::optional<SettingValue>>;
    Stored stored() const;
    void sayMissing(const std::string& notice);

    Application& application_;
    const std::optional<std::string> wanted_;
    const std::function<void(const std::string&)> say_;
    Stored chosenFrom_;
    std::optional<Published<std::uint64_t>::Token> observer_;
};

} // namespace tessarune
