#pragma once

#include "Tessarune/platform/disk/FileWatch.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/UserDefaults.h"
#include "TessaruneCore/host/Host.h"

#include <memory>

namespace tessarune {

/// The settings store as one JSON file, rewritten completely at every change; both front ends share
/// it. Main queue.
///
/// A change first locks the file's folder and reads the file again, so that a change by the other
/// front end is not lost. It keeps all other keys and values, even unknown ones and numbers that no
/// setting can have. An unreadable file
/// is never overwritten: until it is readable or removed, settings are kept in memory only, and
/// `problem` says why.
class JSONUserDefaults final : public UserDefaults {
  public:
    JSONUserDefaults(FileSystem& files, std::filesystem::path file);
    ~JSONUserDefaults() override;

    /// Starts to report changes of the file to the observer, including those by this store. The
    /// host must outlive the store. If the file's folder cannot be watched, logs the failure and
    /// reports no changes.
    void watch(Host& host);

    std::optional<SettingValue> value(std::string_view key) const override;
    void set(std::string_view key, SettingValue value) override;
    bool isUnreadable(std::string_view key) const override;
    void observe(std::function<void()> onChange) override { onChange_ = std::move(onChange); }

    /// The problem with the file, for the user; empty if there is none.
    const std::string& problem() const { return problem_; }
    /// Called by `set` if it has changed `problem`; may be empty.
    std::function<void()> onProblem;
    /// Renames an unreadable file, so that the next change creates a new one. Returns the new path;
    /// empty if the file is readable or cannot be renamed. `problem` has the reason of a failed
    /// renaming.
    std::filesystem::path keepAside();

  private:
    struct Content;
    void load();
    void store();
    void handleChange();

    FileSystem& files_;
    std::filesystem::path file_;
    std::unique_ptr<Content> content_;
    bool isFileUnreadable_ = false; // while true, the file is not written
    std::string problem_;
    std::function<void()> onChange_;
    std::unique_ptr<FileWatch> watch_; // destroyed first: its callback uses the other members
};

} // namespace tessarune
