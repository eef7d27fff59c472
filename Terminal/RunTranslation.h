#pragma once

#include "Tessarune/app/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// Into which language a run translates: the one of the command line, else that of the settings,
/// also when they are changed meanwhile. Main queue; the application outlives it.
class RunTranslation {
  public:
    /// `wanted` is that of the command line: a language, empty for none, absent for the settings'.
    /// `say` gets what the user is to hear; empty where nobody listens.
    RunTranslation(Application& application, std::optional<std::string> wanted,
                   std::function<void(const std::string&)> say);
    ~RunTranslation();
    RunTranslation(const RunTranslation&) = delete;

    /// Sets the settings of this run, so that the session never tries again and again what cannot
    /// be translated. Gives the target, empty if there is none. Throws RunFailure if the command
    /// line's cannot be had.
    std::string choose();
    /// From now on `onChange` gets another target when the settings have another one.
    void follow(std::function<void(std::string target)> onChange);

  private:
    /// Backend and target as they are stored.
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
