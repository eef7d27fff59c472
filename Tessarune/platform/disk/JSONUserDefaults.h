#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/UserDefaults.h"

#include <memory>

namespace tessarune {

/// The settings store as one JSON file, replaced as a whole at every change; both front ends share
/// it. Main queue.
///
/// A change reads the file again first, so that a change by the other front end is not lost, and
/// keeps every key and value that it does not touch, known or not. A file that cannot be understood
/// is never overwritten: settings then live in memory only, and `problem` says so.
class JSONUserDefaults final : public UserDefaults {
  public:
    JSONUserDefaults(FileSystem& files, std::filesystem::path file);
    ~JSONUserDefaults() override;

    std::optional<SettingValue> value(std::string_view key) const override;
    void set(std::string_view key, SettingValue value) override;
    void remove(std::string_view key) override;

    /// What is wrong with the file, for the user; empty while all is well.
    const std::string& problem() const { return problem_; }

  private:
    struct Content;
    void load();
    void store();
    template <typename Change>
    void change(Change apply);

    FileSystem& files_;
    std::filesystem::path file_;
    std::unique_ptr<Content> content_;
    bool readOnly_ = false;
    std::string problem_;
};

} // namespace tessarune
