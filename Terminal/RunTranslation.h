#pragma once

#include "Tessarune/app/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// The target language of a run: that of the command line, or else that of the settings, whose
/// changes it follows. Main queue; the application must outlive it.
class RunTranslation {
  public:
    /// `wanted` comes from the command line: a language, empty for none, absent for that of the
    /// settings.
    /// `say` receives messages to the user; it may be empty.
    RunTranslation(Application& application, std::optional<std::string> wanted,
                   std::function<void(const std::string&)> say);
    ~RunTranslation();
    RunTranslation(const RunTranslation&) = delete;

    /// Overrides the settings for this run, so that the session does not retry impossible
    /// translations. Returns the target; empty if there is none. Throws RunFailure if the target of
    /// the command line is unavailable.
    std::string choose();
    /// Begins to call `onChange` when the settings get another target; does nothing if the command
    /// line decides.
    void follow(std::function<void(std::string target)> onChange);

  private:
    /// The stored backend and target.
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
