#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/host/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Appends records to a log of a diagnostics run: one JSON object per line, with sorted keys and
/// floats rounded to three decimals, unless a record has its own encoding.
///
/// Any thread. Only `close` waits for the disk, and nothing throws: the file is created, written
/// and closed on a serial queue of its own with low priority. Records that cannot be encoded or
/// written are lost, and so are records that arrive while `limit` others are queued for a slow
/// disk; `lostRecords` counts all of these. Each line is one write, so that a killed program leaves
/// complete lines.
class DiagnosticsNDJSONWriter {
  public:
    static constexpr std::size_t usualLimit = 4096;

    /// Encodes a line without its line feed; `nullopt` on failure. Runs on the queue.
    using Encode = std::function<std::optional<std::string>()>;

    /// Creates or empties the file. Does not recreate the run's folder if the run was removed
    /// meanwhile. The host and the disk must outlive the writer.
    DiagnosticsNDJSONWriter(Host& host, FileSystem& files, std::filesystem::path path,
                            std::string_view queueLabel, std::size_t limit = usualLimit);
    /// Calls `close`.
    ~DiagnosticsNDJSONWriter();
    DiagnosticsNDJSONWriter(const DiagnosticsNDJSONWriter&) = delete;

    /// Encodes on the calling thread. Numbers that are not finite are left out.
    void append(const nlohmann::json& record);
    void append(const LogFields& record);
    /// Appends a record that has its own encoding.
    void append(Encode encode);
    /// Appends text as it is: a first line that is not a record, or the content of a file that is
    /// not NDJSON.
    void appendText(std::string text);

    /// Writes the queued records, then closes the file; waits for the queue. Idempotent.
    void close();

    /// The number of records lost so far; exact after `close`.
    std::uint64_t lostRecords() const;

    /// A record in its written form: rounded, without numbers that are not finite.
    static nlohmann::json sanitized(const nlohmann::json& value);
    static nlohmann::json object(const LogFields& fields);

  private:
    class File;

    void enqueue(Encode encode, bool endsLine);

    const std::size_t limit_; // of queued records
    const std::shared_ptr<File> file_;
    const std::shared_ptr<SerialQueue> queue_;
};

} // namespace tessarune
