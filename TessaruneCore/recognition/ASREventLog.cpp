#include "TessaruneCore/recognition/ASREventLog.h"

#include "TessaruneCore/text/Text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace tessarune::ASREventLog {

namespace {

class File {
  public:
    explicit File(const std::filesystem::path& path)
        : path_(path), descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ < 0)
            fail(errno);
    }
    ~File() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string contents() const {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0)
            fail(errno);
        if (S_ISDIR(status.st_mode))
            fail(EISDIR);
        // A device may be endless, so only an empty one such as /dev/null is read.
        if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
            return requireEmpty();
        // One byte more than the file's size, so that the end is found without a larger buffer. The
        // buffer grows for a pipe, which has no size.
        std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
        std::size_t filled = 0;
        while (const std::size_t count = readSome(bytes.data() + filled, bytes.size() - filled)) {
            filled += count;
            if (filled == bytes.size())
                bytes.resize(bytes.size() * 2);
        }
        bytes.resize(filled);
        return bytes;
    }

  private:
    std::size_t readSome(char* bytes, std::size_t size) const {
        ssize_t count = 0;
        do {
            count = ::read(descriptor_, bytes, size);
        } while (count < 0 && errno == EINTR);
        if (count < 0)
            fail(errno);
        return static_cast<std::size_t>(count);
    }

    std::string requireEmpty() const {
        char byte = 0;
        if (readSome(&byte, 1) != 0)
            fail(EINVAL);
        return {};
    }

    [[noreturn]] void fail(int error) const {
        throw std::system_error(error, std::generic_category(), path_.string());
    }

    const std::filesystem::path& path_;
    int descriptor_;
};

bool isEarlier(const ASREventRecord& a, const ASREventRecord& b) {
    return a.t < b.t;
}

} // namespace

Writer::Writer(Host& host, std::unique_ptr<LineLogWriter> lines)
    : host_(host), lines_(std::move(lines)) {}

std::unique_ptr<Writer> Writer::open(Host& host, const std::filesystem::path& path,
                                     Existing existing) {
    auto lines = LineLogWriter::open(host, "Tessarune.ASREventLog.Writer", path, existing);
    if (!lines)
        return nullptr;
    return std::unique_ptr<Writer>(new Writer(host, std::move(lines)));
}

void Writer::append(ASREvent event, std::optional<double> t) {
    lines_->append([record = ASREventRecord(t.value_or(host_.now()), std::move(event))] {
        return record.line();
    });
}

std::vector<ASREventRecord> read(const std::filesystem::path& path) {
    const std::string bytes = File(path).contents();
    const std::string_view contents = Text::withoutCutCharacter(bytes);
    if (!Text::isValidUTF8(contents))
        throw std::runtime_error(path.string() + ": not UTF-8 text");
    return parsed(contents);
}

std::vector<ASREventRecord> parsed(std::string_view contents) {
    std::vector<ASREventRecord> records;
    for (std::string_view rest = contents; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.empty())
            continue;
        if (auto record = ASREventRecord::fromLine(line))
            records.push_back(std::move(*record));
    }
    if (!std::is_sorted(records.begin(), records.end(), isEarlier))
        std::stable_sort(records.begin(), records.end(), isEarlier);
    return records;
}

} // namespace tessarune::ASREventLog
