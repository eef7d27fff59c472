#pragma once

#include "Tessarune/app/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

/// Chooses a run's target language: the one on the command line or, without it, that of the
/// settings. `follow` applies later changes of the settings. Main queue; the application must
/// outlive it.
class RunTranslation {
  public:
    /// `wanted` is the target on the command line: a language; empty: no translation; absent: the
    /// settings decide. `say` receives messages to the user; it may be empty.
    RunTranslation(Application& application, std::optional<std::string> wanted,
                   std::function<void(const std::string&)> say);
    ~RunTranslation();
    RunTranslation(const RunTranslation&) = delete;

    /// Chooses the target, applies it to this run, and returns it. If the result is empty, nothing
    /// is translated in this run. If the target of the settings is unavailable, there is no
    /// translation, and this is reported once, not in every run. Throws RunFailure if the target of
    /// the command line is unavailable.
    std::string choose();
    /// Chooses again whenever another program has changed the stored target or backend, and passes
    /// the result of `choose` to `onChange`. Does nothing if the command line decides. Call once,
    /// after `choose`.
    void follow(std::function<void(std::string target)> onChange);

  private:
    /// The stored backend and target.
    using Stored = std::pair<std::optional<SettingValue>, std::optional<SettingValue>>;
    Stored stored() const;
    void sayMissing(const std::string& notice);

    Application& application_;
    const std::optional<std::string> wanted_;
    const std::function<void(const std::string&)> say_;
    Stored chosenFrom_; ///< what `choose` has read last
    std::optional<Published<std::uint64_t>::Token> observer_;
};

} // namespace tessarune
