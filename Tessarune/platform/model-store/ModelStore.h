#pragma once

#include "Tessarune/platform/disk/FileLock.h"
#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class ModelKind { speech, translation };

/// A file of a model, with its size and checksum when it was installed.
struct ModelFile {
    std::string name;
    std::uint64_t bytes = 0;
    std::string sha256; ///< 64 hexadecimal digits

    bool operator==(const ModelFile&) const = default;
};

/// An installed model.
struct StoredModel {
    ModelKind kind = ModelKind::speech;
    std::string name; ///< "tiny-en", "en-pt"
    std::filesystem::path folder;
    std::vector<ModelFile> files;
    std::map<std::string, std::string> details; ///< data for its engine
    bool isRemovable = false;                   ///< whether it is in the user's own part
    std::string damage; ///< the problem with its files; empty if none was found

    std::uint64_t bytes() const;
    std::filesystem::path path(std::string_view file) const { return folder / file; }
};

/// A model that has changed since it was installed, or that its engine cannot use. The text names
/// the model or the faulty file.
struct ModelDamaged : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The models on this computer: a folder for each, <store>/speech/<name> or
/// <store>/translation/<pair>, with its files and their record in "model.json". A folder gets its
/// name only when it is complete (see ModelInstaller), so every model found here was complete and
/// verified when it was installed.
///
/// The store has several parts: the user's, which is writable, and read-only ones that came with
/// the program. A model in an earlier part hides one of the same name in a later part, unless only
/// the earlier one is damaged. Any thread; nothing is cached.
class ModelStore {
  public:
    ModelStore(FileSystem& files, std::filesystem::path writable,
               std::vector<std::filesystem::path> readOnly);

    /// All models of a kind, sorted by name, including damaged ones. Skips parts that cannot be
    /// read and folders without a readable record.
    std::vector<StoredModel> list(ModelKind kind) const;

    /// The model of this name, or `nullopt`. Compares the sizes of its files, which detects
    /// truncated or missing ones; `verify` detects the rest.
    std::optional<StoredModel> find(ModelKind kind, std::string_view name) const;

    /// Reads all files and compares their checksums. Throws ModelDamaged. Takes a second per few
    /// hundred megabytes.
    static void verify(const StoredModel& model);

    /// Removes a model from the user's part, with the remains of an interrupted download. Throws
    /// std::runtime_error if it does not exist, is in a read-only part or is being downloaded,
    /// std::invalid_argument if the name is not safe, std::system_error if the disk fails.
    void remove(ModelKind kind, std::string_view name);

    /// Whether a model or file can have this name: up to 100 letters, digits, ".", "_" and "-", not
    /// beginning with a dot. Names come from downloads; they must not lead out of their folder.
    static bool isSafeName(std::string_view name);

    // For the installer. All of these throw std::invalid_argument if the name is not safe.

    /// Locks the model against changes by others, here and in other processes. `nullopt` if it is
    /// locked already. Throws std::system_error if the disk fails.
    std::optional<FileLock> tryToLock(ModelKind kind, std::string_view name);
    std::filesystem::path folder(ModelKind kind, std::string_view name) const;
    /// The folder for the files of a model that is not complete yet.
    std::filesystem::path partialFolder(ModelKind kind, std::string_view name) const;
    /// Writes the record of the files in `partialFolder` and renames that folder to `folder`,
    /// replacing an earlier model. The model must be locked.
    StoredModel adopt(ModelKind kind, const std::string& name,
                      const std::vector<std::string>& files,
                      const std::map<std::string, std::string>& details);

    FileSystem& files() const { return files_; }

  private:
    std::optional<StoredModel> read(ModelKind kind, const std::filesystem::path& folder,
                                    bool isRemovable) const;

    FileSystem& files_;
    std::filesystem::path writable_;
    std::vector<std::filesystem::path> readOnly_;
};

} // namespace tessarune
