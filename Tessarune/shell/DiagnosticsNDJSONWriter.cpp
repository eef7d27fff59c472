#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"

#include "TessaruneCore/text/JSON.h"

#include <atomic>
#include <cmath>
#include <system_error>
#include <utility>

namespace tessarune {

/// Used on the queue only, except for its counters.
class DiagnosticsNDJSONWriter::File {
  public:
    File(FileSystem& files, std::filesystem::path path) : files_(files), path_(std::move(path)) {}

    std::atomic<std::size_t> queued{0};
    std::atomic<std::uint64_t> lost{0};

    void create() {
        try {
            file_ = files_.create(path_);
        } catch (const std::system_error&) { // every record counts as lost
        }
    }

    void write(const std::optional<std::string>& line) {
        if (!file_ || !line) {
            ++lost;
            return;
        }
        try {
            file_->append(*line);
        } catch (const std::system_error&) {
            ++lost;
            removePartialLine();
        }
    }

    void close() {
        try {
            if (const auto file = std::exchange(file_, nullptr))
                file->close();
        } catch (const std::system_error&) { // the lines written so far remain
        }
    }

  private:
    void removePartialLine() {
        try {
            file_->appendZeros(0);
        } catch (const std::system_error&) { // the next append overwrites it
        }
    }

    FileSystem& files_;
    const std::filesystem::path path_;
    std::unique_ptr<AppendFile> file_;
};

DiagnosticsNDJSONWriter::DiagnosticsNDJSONWriter(Host& host, FileSystem& files,
                                                 std::filesystem::path path,
                                                 std::string_view queueLabel, std::size_t limit)
    : limit_(limit),
      file_(std::make_shared<File>(files, std::move(path))),
      queue_(host.serialQueue(queueLabel, QueuePriority::utility)) {
    queue_->async([file = file_] { file->create(); });
}

DiagnosticsNDJSONWriter::~DiagnosticsNDJSONWriter() {
    close();
}

void DiagnosticsNDJSONWriter::append(const nlohmann::json& record) {
    append([line = JSON::line(sanitized(record))] { return line; });
}

void DiagnosticsNDJSONWriter::append(const LogFields& record) {
    append(object(record));
}

void DiagnosticsNDJSONWriter::append(Encode encode) {
    enqueue(std::move(encode), true);
}

void DiagnosticsNDJSONWriter::appendText(std::string text) {
    enqueue([text = std::move(text)] { return text; }, false);
}

void DiagnosticsNDJSONWriter::enqueue(Encode encode, bool endsLine) {
    if (file_->queued >= limit_) {
        ++file_->lost;
        return;
    }
    ++file_->queued;
    queue_->async([file = file_, encode = std::move(encode), endsLine] {
        std::optional<std::string> line = encode();
        if (line && endsLine)
            *line += '\n';
        file->write(line);
        --file->queued;
    });
}

void DiagnosticsNDJSONWriter::close() {
    queue_->sync([this] { file_->close(); });
}

std::uint64_t DiagnosticsNDJSONWriter::lostRecords() const {
    return file_->lost;
}

nlohmann::json DiagnosticsNDJSONWriter::sanitized(const nlohmann::json& value) {
    constexpr double perUnit = 1000; // three decimals
    if (value.is_number_float())
        return std::round(value.get<double>() * perUnit) / perUnit;
    if (!value.is_structured())
        return value;
    JSON::Value result = value.is_object() ? JSON::Value::object() : JSON::Value::array();
    for (const auto& [key, member] : value.items()) {
        if (member.is_number_float() && !std::isfinite(member.get<double>()))
            continue;
        if (value.is_object())
            result[key] = sanitized(member);
        else
            result.push_back(sanitized(member));
    }
    return result;
}

nlohmann::json DiagnosticsNDJSONWriter::object(const LogFields& fields) {
    JSON::Value result = JSON::Value::object();
    for (const auto& [name, value] : fields)
        std::visit([&, &key = name](const auto& plain) { result[key] = plain; }, value);
    return result;
}

} // namespace tessarune
