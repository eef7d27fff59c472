#pragma once

#include "Tessarune/platform/disk/FileWatch.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/UserDefaults.h"
#include "TessaruneCore/host/Host.h"

#include <memory>

namespace tessarune {

/// The settings store as one JSON file, replaced as a whole at every change; both front ends share
/// it. Main queue.
///
/// A change locks the file's folder and reads the file again first, so that a change by the other
/// front end is not lost, and keeps every key and value that it does not touch, known or not. A
/// file that cannot be understood is never overwritten: settings then live in memory only, and
/// `problem` says so.
class JSONUserDefaults final : public UserDefaults {
  public:
    JSONUserDefaults(FileSystem& files, std::filesystem::path file);
    ~JSONUserDefaults() override;

    /// From now on notices what others write into the file. The host outlives the store. Where the
    /// file's folder cannot be watched, nothing is ever noticed.
    void watch(Host& host);

    std::optional<SettingValue> value(std::string_view key) const override;
    void set(std::string_view key, SettingValue value) override;
    void remove(std::string_view key) override;
    bool isUnreadable(std::string_view key) const override;
    void observe(std::function<void()> onChange) override { onChange_ = std::move(onChange); }

    /// What is wrong with the file, for the user; empty while all is well.
    const std::string& problem() const { return problem_; }
    /// Called after a write has changed the problem; absent: nobody is.
    std::function<void()> onProblem;
    /// Renames a file that cannot be understood and goes on with an empty one. Gives its new name;
    /// empty if there was no need or it failed, which `problem` says then.
    std::filesystem::path keepAside();

  private:
    struct Content;
    void load();
    void store();
    template <typename Change>
    void change(Change apply);
    void handleChange();

    FileSystem& files_;
    std::filesystem::path file_;
    std::unique_ptr<Content> content_;
    bool readOnly_ = false;
    std::string problem_;
    std::function<void()> onChange_;
    std::unique_ptr<FileWatch> watch_; // ends before what it calls
};

} // namespace tessarune
