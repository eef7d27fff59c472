#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tessarune::simulation {

/// A disk in memory that fails as instructed: at a given operation, at all operations from a given
/// one, when it is full, for some paths, or by a loss of power, after which only synchronized data
/// remains.
///
/// Used by one thread. Every call that would reach a real disk is an operation; operations are
/// counted from 1.
class FaultyFileSystem final : public FileSystem {
  public:
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    FaultyFileSystem() = default;
    /// Copies the contents; files opened on `other` still belong to `other`.
    FaultyFileSystem(const FaultyFileSystem& other) { replaceContents(other); }
    void replaceContents(const FaultyFileSystem& other) {
        nodes_.clear();
        for (const auto& [path, node] : other.nodes_)
            nodes_[path] = std::make_shared<Node>(*node);
    }

    std::uint64_t operations = 0;
    std::uint64_t failAt = never; ///< this one operation fails
    /// Whether the operation `failAt` takes effect although it reports a failure, as if only the
    /// folder could not be flushed. Applies to atomic writes and renamings.
    bool failsLate = false;
    std::uint64_t failFrom = never; ///< this and all later ones fail, as in a killed process
    std::errc failure = std::errc::io_error;
    std::uint64_t capacity = never; ///< bytes of all files together
    /// Operations on paths that contain this text fail.
    std::string refused;
    /// Called before each operation.
    std::function<void(const std::string& operation, const Path& path)> onOperation;

    /// What remains of bytes that were never synchronized.
    enum class PowerLoss {
        keepsNothing,
        keepsSize,      ///< the length, with zeros for bytes
        keepsOverwrites ///< bytes overwritten in place, but none that were appended
    };
    void losePower(PowerLoss kind) {
        for (auto& [path, node] : nodes_) {
            if (node->isFolder)
                continue;
            std::string kept = node->durable;
            if (kind == PowerLoss::keepsSize)
                kept.resize(node->bytes.size(), '\0');
            if (kind == PowerLoss::keepsOverwrites)
                kept = node->bytes.substr(0, node->durable.size());
            node->bytes = node->durable = kept;
        }
    }
    /// Ends the faults.
    void recover() {
        failAt = failFrom = capacity = never;
        refused.clear();
    }

    /// A file's content, without counting an operation; empty if the file is missing.
    std::string contentsOf(const Path& path) const {
        const auto found = nodes_.find(path);
        return found == nodes_.end() ? std::string() : found->second->bytes;
    }
    void setContents(const Path& path, std::string bytes) {
        makeFolders(path.parent_path());
        const auto node = std::make_shared<Node>();
        node->durable = node->bytes = std::move(bytes);
        nodes_[path] = node;
    }
    bool has(const Path& path) const { return nodes_.contains(path); }
    std::uint64_t usedSpace() const {
        std::uint64_t used = 0;
        for (const auto& [path, node] : nodes_)
            used += node->bytes.size();
        return used;
    }

    // FileSystem

    std::string read(const Path& path) override {
        begin("read", path);
        return file(path).bytes;
    }
    std::string read(const Path& path, std::uint64_t offset, std::size_t count) override {
        begin("read", path);
        const std::string& bytes = file(path).bytes;
        return offset < bytes.size() ? bytes.substr(offset, count) : std::string();
    }
    void writeAtomically(const Path& path, std::string_view bytes) override {
        const std::exception_ptr failed = beginReplacement("write", path);
        requireFolder(path);
        requireRoom(bytes.size(), path);
        const auto node = std::make_shared<Node>();
        node->durable = node->bytes = std::string(bytes);
        nodes_[path] = node;
        if (failed)
            std::rethrow_exception(failed);
    }
    std::unique_ptr<AppendFile> create(const Path& path) override {
        begin("create", path);
        requireFolder(path);
        nodes_[path] = std::make_shared<Node>();
        return std::make_unique<File>(*this, path, nodes_[path]);
    }
    std::unique_ptr<AppendFile> openForAppending(const Path& path) override {
        begin("open", path);
        requireFolder(path);
        auto& node = nodes_[path];
        if (!node)
            node = std::make_shared<Node>();
        return std::make_unique<File>(*this, path, node);
    }
    void truncate(const Path& path, std::uint64_t size) override {
        begin("truncate", path);
        if (nodes_.contains(path))
            file(path).bytes.resize(size);
    }
    void createDirectories(const Path& path) override {
        begin("createDirectories", path);
        makeFolders(path);
    }
    bool makeDirectory(const Path& path) override {
        begin("makeDirectory", path);
        requireFolder(path);
        if (nodes_.contains(path))
            return false;
        makeFolders(path);
        return true;
    }
    bool remove(const Path& path) override {
        begin("remove", path);
        return std::erase_if(nodes_, [&](const auto& entry) {
                   return entry.first == path || isBelow(entry.first, path);
               }) > 0;
    }
    bool removeFile(const Path& path) override { return !isFolder(path) && remove(path); }
    void rename(const Path& from, const Path& to) override {
        const std::exception_ptr failed = beginReplacement("rename", from);
        file(from);
        nodes_[to] = nodes_.extract(from).mapped();
        if (failed)
            std::rethrow_exception(failed);
    }
    bool exists(const Path& path) override {
        return succeeds("exists", path) && nodes_.contains(path);
    }
    bool isDirectory(const Path& path) override {
        return succeeds("isDirectory", path) && isFolder(path);
    }
    std::uint64_t size(const Path& path) override {
        begin("size", path);
        return file(path).bytes.size();
    }
    double modifiedAt(const Path& path) override {
        begin("modifiedAt", path);
        const auto found = nodes_.find(path);
        if (found == nodes_.end())
            fail(std::errc::no_such_file_or_directory, path);
        return found->second->modifiedAt;
    }
    void setModifiedAt(const Path& path, double time) { nodes_.at(path)->modifiedAt = time; }
    std::vector<std::string> list(const Path& folder) override {
        begin("list", folder);
        std::vector<std::string> names;
        for (const auto& [path, node] : nodes_) {
            if (path.parent_path() == folder && path != folder)
                names.push_back(path.filename().string());
        }
        return names; // a map of paths is sorted
    }
    std::uint64_t freeSpace(const Path& path) override {
        begin("freeSpace", path);
        return capacity == never ? never : capacity - std::min(capacity, usedSpace());
    }

  private:
    struct Node {
        std::string bytes;
        std::string durable; ///< what a loss of power leaves
        bool isFolder = false;
        double modifiedAt = 0;
    };

    class File final : public AppendFile {
      public:
        File(FaultyFileSystem& disk, Path path, std::shared_ptr<Node> node)
            : disk_(disk), path_(std::move(path)), node_(std::move(node)) {
            end_ = node_->bytes.size();
        }
        void append(std::string_view bytes) override {
            try {
                disk_.begin("append", path_);
            } catch (const std::system_error&) {
                if (disk_.operations <= disk_.failFrom)
                    put(bytes.substr(0, bytes.size() / 2)); // a failed write may write a part
                throw;
            }
            disk_.requireRoom(bytes.size(), path_);
            put(bytes);
            end_ += bytes.size();
        }
        void appendZeros(std::uint64_t count) override {
            disk_.begin("append", path_);
            put(std::string(count, '\0'));
            end_ += count;
        }
        void overwrite(std::uint64_t offset, std::string_view bytes) override {
            disk_.begin("overwrite", path_);
            node_->bytes.replace(offset, bytes.size(), bytes);
        }
        void synchronize() override {
            disk_.begin("synchronize", path_);
            node_->durable = node_->bytes;
        }
        void close() override { disk_.begin("close", path_); }

      private:
        void put(std::string_view bytes) { node_->bytes.resize(end_), node_->bytes += bytes; }

        FaultyFileSystem& disk_;
        Path path_;
        std::shared_ptr<Node> node_;
        std::size_t end_ = 0;
    };

    [[noreturn]] static void fail(std::errc error, const Path& path) {
        throw std::system_error(std::make_error_code(error), path.string());
    }
    void begin(const char* operation, const Path& path) {
        ++operations;
        if (onOperation)
            onOperation(operation, path);
        const bool isRefused = !refused.empty() && path.string().find(refused) != std::string::npos;
        if (operations == failAt || operations >= failFrom || isRefused)
            fail(failure, path);
    }
    /// Returns the failure to report after the operation has taken effect; null: none.
    std::exception_ptr beginReplacement(const char* operation, const Path& path) {
        try {
            begin(operation, path);
        } catch (const std::system_error&) {
            if (!failsLate || operations != failAt)
                throw;
            return std::current_exception();
        }
        return nullptr;
    }
    bool succeeds(const char* operation, const Path& path) {
        try {
            begin(operation, path);
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }
    bool isFolder(const Path& path) const {
        const auto found = nodes_.find(path);
        return found != nodes_.end() && found->second->isFolder;
    }
    static bool isBelow(const Path& path, const Path& folder) {
        return path.string().starts_with(folder.string() + "/");
    }
    Node& file(const Path& path) {
        const auto found = nodes_.find(path);
        if (found == nodes_.end())
            fail(std::errc::no_such_file_or_directory, path);
        if (found->second->isFolder)
            fail(std::errc::is_a_directory, path);
        return *found->second;
    }
    void makeFolders(const Path& path) {
        Path folder;
        for (const auto& part : path) {
            folder /= part;
            auto& node = nodes_[folder];
            if (!node) {
                node = std::make_shared<Node>();
                node->isFolder = true;
            } else if (!node->isFolder) {
                fail(std::errc::not_a_directory, folder);
            }
        }
    }
    void requireFolder(const Path& path) {
        if (!isFolder(path.parent_path()))
            fail(std::errc::no_such_file_or_directory, path);
    }
    void requireRoom(std::size_t bytes, const Path& path) {
        if (capacity != never && usedSpace() + bytes > capacity)
            fail(std::errc::no_space_on_device, path);
    }

    std::map<Path, std::shared_ptr<Node>> nodes_;
};

} // namespace tessarune::simulation
