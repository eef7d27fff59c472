#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace tessarune::testing {

/// A temporary folder that is removed with the object.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "tessarune-test-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const char* name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

} // namespace tessarune::testing
