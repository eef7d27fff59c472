#include "Tessarune/platform/archive/TarArchive.h"

#include "TessaruneCore/text/SystemErrors.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tessarune::TarArchive {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr std::size_t blockBytes = 1 << 16;

class OpenFile {
  public:
    OpenFile(std::filesystem::path path, int flags)
        : path_(std::move(path)),
          number_(::open(path_.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, ownerOnly)) {
        if (number_ < 0)
            fail();
    }
    ~OpenFile() { ::close(number_); }
    OpenFile(const OpenFile&) = delete;

    int number() const { return number_; }
    struct stat facts() const {
        struct stat found {};
        if (::fstat(number_, &found) != 0)
            fail();
        return found;
    }
    std::size_t read(std::array<char, blockBytes>& block) const {
        for (;;) {
            const ssize_t count = ::read(number_, block.data(), block.size());
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                fail();
        }
    }

  private:
    [[noreturn]] void fail() const {
        throw std::runtime_error(path_.string() + ": " + systemMessage(errno));
    }

    const std::filesystem::path path_;
    const int number_;
};

struct FreeWriter {
    void operator()(archive* writer) const { archive_write_free(writer); }
};
struct FreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Writer = std::unique_ptr<archive, FreeWriter>;

void check(archive* writer, la_ssize_t result) {
    if (result < ARCHIVE_WARN)
        throw std::runtime_error(archive_error_string(writer));
}

/// Adds a file. If the file grows meanwhile, its entry keeps the initial size; if the file shrinks,
/// its entry is padded with zeros.
void add(archive* writer, const Entry& file) {
    const OpenFile source(file.path, O_RDONLY);
    const struct stat facts = source.facts();
    const std::unique_ptr<archive_entry, FreeEntry> entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), file.name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), ownerOnly);
    archive_entry_set_size(entry.get(), facts.st_size);
    archive_entry_set_mtime(entry.get(), facts.st_mtime, 0);
    check(writer, archive_write_header(writer, entry.get()));
    std::array<char, blockBytes> block;
    while (const std::size_t count = source.read(block))
        check(writer, archive_write_data(writer, block.data(), count));
    check(writer, archive_write_finish_entry(writer));
}

} // namespace

void write(const std::filesystem::path& to, const std::vector<Entry>& entries) {
    std::filesystem::path part = to;
    part += ".part" + std::to_string(::getpid());
    try {
        const OpenFile target(part, O_WRONLY | O_CREAT | O_EXCL);
        const Writer writer(archive_write_new());
        check(writer.get(), archive_write_add_filter_gzip(writer.get()));
        check(writer.get(), archive_write_set_format_pax_restricted(writer.get()));
        check(writer.get(), archive_write_open_fd(writer.get(), target.number()));
        for (const Entry& entry : entries)
            add(writer.get(), entry);
        check(writer.get(), archive_write_close(writer.get()));
        std::filesystem::rename(part, to);
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        throw;
    }
}

} // namespace tessarune::TarArchive
