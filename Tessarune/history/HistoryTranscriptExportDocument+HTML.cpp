#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <string_view>

namespace tessarune {

namespace {

constexpr std::string_view styleSheet = R"(
:root {
  --page: #f6f7f9; --paper: #ffffff; --ink: #1d2430; --soft: #5b6675; --faint: #98a2b3;
  --line: #e4e8ee; --accent: #3d7eff; --gutter: 40px; --gutter-gap: 8px;
}
* { box-sizing: border-box; }
body {
  margin: 0; background: var(--page); color: var(--ink); line-height: 1.6;
  font-family: system-ui, -apple-system, "Segoe UI", "Noto Sans", "PingFang SC", "Noto Sans CJK SC",
    "Source Han Sans SC", "Microsoft YaHei", sans-serif;
}
main { max-width: 820px; margin: 0 auto; padding: 40px 20px 64px; }
article {
  background: var(--paper); border: 1px solid var(--line); border-radius: 14px; padding: 36px 40px;
}
header { border-bottom: 1px solid var(--line); margin-bottom: 22px; padding-bottom: 18px; }
h1 { font-size: 24px; line-height: 1.3; margin: 0; }
.note { color: var(--soft); font-size: 14px; margin-top: 8px; overflow-wrap: anywhere; }
.row { display: flex; padding: 7px 0; break-inside: avoid; }
.time {
  flex: none; width: calc(var(--gutter) + 16px); margin-right: var(--gutter-gap); padding-top: 3px;
  color: var(--faint); font-size: 12px; font-variant-numeric: tabular-nums;
}
.no-timing .time { display: none; }
.block { flex: 1; min-width: 0; border-left: 2px solid var(--line); padding-left: 12px; }
.row:hover .block { border-left-color: var(--accent); }
.source { font-size: 16px; overflow-wrap: anywhere; }
.translation { color: var(--soft); font-size: 14.5px; margin-top: 2px; overflow-wrap: anywhere; }
@media (max-width: 560px) { main { padding: 0; } article { border: 0; padding: 24px 18px; } }
@media print {
  body { background: none; } main { max-width: none; padding: 0; } article { border: 0; padding: 0; }
}
)";

/// Escapes HTML's special characters; a line feed becomes <br>.
std::string escaped(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        case '\n':
            result += "<br>";
            break;
        default:
            result += character;
        }
    }
    return result;
}

/// Each text has its own direction: the translation of an English row may be Arabic.
std::string element(std::string_view type, std::string_view text) {
    return "<div class=\"" + std::string(type) + "\" dir=\"auto\">" + escaped(text) + "</div>";
}

} // namespace

std::string HistoryTranscriptExportDocument::html() const {
    std::string page = "<!doctype html>\n<html lang=\"zh-CN\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<title>" +
                       escaped(title) + "</title>\n<style>" + std::string(styleSheet) +
                       "</style>\n</head>\n<body>\n<main>\n<article>\n<header>\n<h1>" +
                       escaped(title) + "</h1>\n";
    if (!note.empty())
        page += element("note", note) + "\n";
    page += "</header>\n<section class=\"content\">\n<div class=\"transcript ";
    page += sentenceTimings.empty() ? "no-timing\">\n" : "with-timing\">\n";
    for (const TranscriptRow& row : transcriptRows()) {
        page += "<section class=\"row\"><div class=\"time\">" + timeOf(row).value_or("") +
                "</div><div class=\"block\">" + element("source", row.source);
        if (!row.translation.empty())
            page += element("translation", row.translation);
        page += "</div></section>\n";
    }
    return page + "</div>\n</section>\n</article>\n</main>\n</body>\n</html>\n";
}

} // namespace tessarune
