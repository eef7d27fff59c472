#include "Terminal/CaptionOutput.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/PrintedRows.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace tessarune {

namespace {

using Json = nlohmann::ordered_json;

Json texts(const CaptionCore::Rows& rows) {
    Json list = Json::array();
    for (const auto& row : rows)
        list.push_back(row.sourceText);
    return list;
}

void putIfPresent(Json& object, const char* key, const std::optional<double>& value) {
    if (value)
        object[key] = *value;
}

/// Prints objects in a stable order of fields, so that a person can read them too.
class Printer {
  public:
    Printer(std::FILE* out, std::function<double()> now, bool quiet)
        : out_(out), now_(std::move(now)), quiet_(quiet) {}

    void update(const CaptionPicture& picture) {
        const LiveCaptions& captions = picture.captions;
        const CaptionCore::Rows& rows = *captions.committedSegments;
        printed_.follow(rows);
        while (printed_.count() < rows.size())
            print(committed(captions, printed_.next(rows)));
        for (const std::size_t i : printed_.news(rows))
            print(translation(rows, i, picture.target));
        printPreview(picture);
        Json live = object("live");
        live["leading"] = texts(*captions.liveLeadingSentences);
        live["soft"] = texts(*captions.softCaptionSegments);
        live["partial"] = captions.currentPartial->sourceText;
        Json shown = live;
        shown.erase("t");
        if (shown == shown_)
            return;
        shown_ = std::move(shown);
        print(live);
    }

    void status(std::string_view text) {
        if (quiet_)
            return;
        Json line = object("status");
        line["text"] = text;
        print(line);
    }

    void progress(std::string_view text) {
        if (quiet_)
            return;
        Json line = object("progress");
        line["text"] = text;
        print(line);
    }

    void finish(const CaptionPicture& picture) {
        update(picture);
        print(object("end"));
    }

  private:
    Json object(const char* type) const { return {{"type", type}, {"t", now_()}}; }

    Json committed(const LiveCaptions& captions, const CaptionSegment& row) const {
        Json line = object("committed");
        line["id"] = row.id.text();
        line["text"] = row.sourceText;
        line["kind"] = name(row.freezeKind);
        line["start"] = row.startedAt;
        putIfPresent(line, "end", row.endedAt);
        putIfPresent(line, "firstSeenAt", row.firstSeenAt);
        line["revisions"] = row.revisionCount;
        const auto words = captions.wordEvents.find(row.id);
        if (words == captions.wordEvents.end())
            return line;
        line["words"] = Json::array();
        for (const auto& event : words->second) {
            Json word = {{"word", event.word}};
            putIfPresent(word, "start", event.audioStart);
            putIfPresent(word, "end", event.audioEnd);
            line["words"].push_back(std::move(word));
        }
        return line;
    }

    Json translation(const CaptionCore::Rows& rows, std::size_t index,
                     const std::string& target) const {
        const CaptionSegment& row = rows[index];
        Json line = object("translation");
        line["unit"] = row.translationUnitID->text();
        line["segments"] = Json::array();
        for (const CaptionSegment& member : unitRows(rows, index))
            line["segments"].push_back(member.id.text());
        line["target"] = target;
        if (row.translatedText)
            line["text"] = *row.translatedText;
        else
            line["error"] = *row.translationError;
        return line;
    }

    void printPreview(const CaptionPicture& picture) {
        const LiveCaptionDisplayFrame& frame = picture.frame;
        if (frame.ghostTranslationText == preview_ &&
            frame.ghostTranslationSourceText == previewSource_)
            return;
        preview_ = frame.ghostTranslationText;
        previewSource_ = frame.ghostTranslationSourceText;
        Json line = object("preview");
        line["target"] = picture.target;
        line["source"] = previewSource_;
        line["text"] = preview_;
        print(line);
    }

    void print(const Json& object) const {
        std::fprintf(out_, "%s\n", jsonLine(object).c_str());
        std::fflush(out_);
    }

    std::FILE* out_;
    std::function<double()> now_;
    bool quiet_;
    PrintedRows printed_;
    std::string preview_;
    std::string previewSource_;
    Json shown_; ///< the last "live" object, without its time
};

} // namespace

CaptionOutput makeJSONOutput(std::FILE* out, std::function<double()> now, bool quiet) {
    auto printer = std::make_shared<Printer>(out, std::move(now), quiet);
    return {[printer](const CaptionPicture& picture) { printer->update(picture); },
            [printer](std::string_view text) { printer->status(text); },
            [printer](std::string_view text) { printer->progress(text); }, [] {},
            [printer](const CaptionPicture& picture) { printer->finish(picture); }};
}

} // namespace tessarune
