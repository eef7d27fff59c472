#include "bench/quality/CaptionTrace.h"

#include "TessaruneCore/text/JSON.h"
#include "bench/quality/DisplayedWords.h"

#include <utility>

namespace tessarune {

namespace {

/// All lines of one change of the captions are printed within this time.
constexpr double oneChangeSeconds = 0.005;

std::string openText(const JSON::Value& live) {
    std::string text;
    for (const char* key : {"leading", "soft"}) {
        for (const auto& piece : live.at(key))
            text += piece.get<std::string>() + " ";
    }
    return text + live.at("partial").get<std::string>();
}

} // namespace

void CaptionTrace::read(std::string_view line) {
    const auto object = JSON::parse(line);
    const auto& type = object.at("type").get_ref<const std::string&>();
    if (type != "live" && type != "committed")
        return;
    const double t = object.at("t");
    if (t > committedAt_ + oneChangeSeconds)
        applyCommitted();
    if (type == "live") {
        open_ = openText(object);
        const std::string settled = std::exchange(committed_, {});
        trace_.show(t, DisplayedWords::asSpoken(settled), DisplayedWords::asSpoken(open_));
    } else if (object.value("start", t) < from_) {
        trace_ = {};
        committed_.clear();
    } else {
        committed_ += object.at("text").get<std::string>() + " ";
        committedAt_ = t;
    }
}

/// Applies rows whose commit did not change the open text.
void CaptionTrace::applyCommitted() {
    if (committed_.empty())
        return;
    trace_.show(committedAt_, DisplayedWords::asSpoken(std::exchange(committed_, {})),
                DisplayedWords::asSpoken(open_));
}

WordHistory CaptionTrace::finish() {
    applyCommitted();
    return trace_.history();
}

} // namespace tessarune
