#include "Tessarune/platform/web/HTTPSFetch.h"

#include "Tessarune/platform/model-store/HTTPTransfer.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <cstdint>

namespace tessarune {

namespace {

constexpr std::uint64_t maximumBytes = 4'000'000;

} // namespace

std::optional<WebAnswer> fetchOverHTTPS(const std::string& url, const std::string& userAgent,
                                        const std::stop_token& stop) {
    // The address may come from a fetched page, so its scheme is not trusted.
    if (!Text::lowercased(url.substr(0, url.find(':') + 1)).starts_with("https:"))
        return std::nullopt;
    TransferRequest request;
    request.url = url;
    request.limit = maximumBytes;
    request.userAgent = userAgent;
    WebAnswer answer;
    const TransferSink sink{[&](std::uint64_t) { answer.body.clear(); },
                            [&](std::string_view bytes) { answer.body += bytes; }};
    const TransferOutcome outcome = transfer(request, sink, stop);
    if (outcome.kind != TransferOutcome::Kind::complete) {
        TessaruneLog::app.info([&] { return "web: " + url + ": " + outcome.reason; });
        return std::nullopt;
    }
    answer.contentType = Text::lowercased(outcome.contentType);
    return answer;
}

} // namespace tessarune
