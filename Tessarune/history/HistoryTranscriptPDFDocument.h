#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The content of a transcript's PDF. A plain value.
struct HistoryTranscriptPDFDocument {
    struct Row {
        std::optional<std::string> time; ///< "04:05"
        std::string source;
        std::string translation; ///< may be empty, or have several lines

        bool operator==(const Row&) const = default;
    };

    std::string title;
    std::string note; ///< may be empty
    std::vector<Row> rows;

    bool operator==(const HistoryTranscriptPDFDocument&) const = default;

    /// The document as one line of JSON, for the program that lays it out.
    std::string encoded() const;
    /// `nullopt` if the text is not such an object.
    static std::optional<HistoryTranscriptPDFDocument> decoded(std::string_view json);
};

/// Interface: lays a document out and returns the PDF's bytes. Blocks. Throws std::exception with a
/// text for the user.
using WriteTranscriptPDF = std::function<std::string(const HistoryTranscriptPDFDocument&)>;

} // namespace tessarune
