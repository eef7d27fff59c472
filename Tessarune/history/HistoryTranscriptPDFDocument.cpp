#include "Tessarune/history/HistoryTranscriptPDFDocument.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

std::string HistoryTranscriptPDFDocument::encoded() const {
    JSON::Value all = JSON::Value::array();
    for (const Row& row : rows) {
        JSON::Value object{{"source", row.source}, {"translation", row.translation}};
        if (row.time)
            object["time"] = *row.time;
        all.push_back(std::move(object));
    }
    return JSON::line(JSON::Value{{"title", title}, {"note", note}, {"rows", std::move(all)}})
        .value_or("");
}

std::optional<HistoryTranscriptPDFDocument>
HistoryTranscriptPDFDocument::decoded(std::string_view json) {
    const JSON::Value object = JSON::parse(json);
    if (!object.is_object())
        return std::nullopt;
    try {
        HistoryTranscriptPDFDocument document;
        object.at("title").get_to(document.title);
        object.at("note").get_to(document.note);
        for (const JSON::Value& element : object.at("rows")) {
            Row row{std::nullopt, element.at("source"), element.at("translation")};
            if (element.contains("time"))
                row.time = element.at("time").get<std::string>();
            document.rows.push_back(std::move(row));
        }
        return document;
    } catch (const JSON::Value::exception&) {
        return std::nullopt;
    }
}

} // namespace tessarune
