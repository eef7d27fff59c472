#include "Terminal/CaptionOutput.h"

#include "TessaruneCore/text/Text.h"

#include <cstddef>
#include <memory>

namespace tessarune {

std::string liveText(const CaptionCore& core) {
    std::vector<std::string> parts;
    const auto add = [&](const CaptionSegment& row) {
        const std::string_view text = Text::trimmed(row.sourceText);
        if (!text.empty())
            parts.emplace_back(text);
    };
    for (const auto& row : *core.liveLeadingSentences)
        add(row);
    for (const auto& row : *core.softCaptionSegments)
        add(row);
    add(*core.currentPartial);
    return Text::joined(parts, " ");
}

CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, bool quiet) {
    auto printed = std::make_shared<std::size_t>(0);
    CaptionOutput output;
    output.update = [out, printed](const CaptionCore& core) {
        const auto& rows = *core.committedSegments;
        if (*printed == rows.size())
            return;
        for (; *printed < rows.size(); ++*printed) {
            std::fprintf(out, "%s\n", rows[*printed].sourceText.c_str());
        }
        std::fflush(out);
    };
    output.status = [errors, quiet](std::string_view text) {
        if (!quiet)
            std::fprintf(errors, "%.*s\n", static_cast<int>(text.size()), text.data());
    };
    output.progress = [](std::string_view) {}; // a file of captions has no place for it
    output.finish = output.update;
    return output;
}

} // namespace tessarune
