#include "Tessarune/platform/model-store/HTTPTransfer.h"

#include "Tessarune/platform/host/LateLibrary.h"
#include "TessaruneCore/text/Localization.h"

#include <curl/curl.h>
// These macros would call the library directly.
#undef curl_easy_getinfo
#undef curl_easy_setopt

#include <charconv>
#include <cmath>
#include <exception>
#include <memory>
#include <stdexcept>

namespace tessarune {

namespace {

constinit LateLibrary curlLibrary("libcurl.so.4");
#define TESSARUNE_CALL(name) constinit const LateFunction<decltype(::name)> name(curlLibrary, #name)
TESSARUNE_CALL(curl_easy_cleanup);
TESSARUNE_CALL(curl_easy_getinfo);
TESSARUNE_CALL(curl_easy_init);
TESSARUNE_CALL(curl_easy_perform);
TESSARUNE_CALL(curl_easy_setopt);
TESSARUNE_CALL(curl_easy_strerror);
TESSARUNE_CALL(curl_global_init);
TESSARUNE_CALL(curl_strnequal);
#undef TESSARUNE_CALL

// HTTP status codes
constexpr long partialContent = 206;
constexpr long requestTimeout = 408;
constexpr long rangeNotSatisfiable = 416;
constexpr long tooManyRequests = 429;
constexpr long firstServerError = 500;

constexpr long maximumRedirections = 5;
/// The minimum speed of a download; a slower one counts as stalled.
constexpr long slowestBytesPerSecond = 100;

/// The state that the callbacks of one request share.
struct Exchange {
    const TransferRequest& request;
    const TransferSink& sink;
    const std::stop_token& stop;
    CURL* handle;
    std::optional<std::uint64_t> rangeStart; ///< of the response being read
    std::uint64_t received = 0;              ///< bytes from the start of the file
    bool hasBegun = false;
    bool isTooLong = false;
    bool rangeWasWrong = false;
    std::exception_ptr failure;
};

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
    return curl_strnequal(text.data(), start.data(), start.size()) != 0 &&
           text.size() >= start.size();
}

std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto& exchange = *static_cast<Exchange*>(context);
    std::string_view line(bytes, size * count);
    constexpr std::string_view name = "content-range: bytes ";
    if (startsWithIgnoringCase(line, "http/"))
        exchange.rangeStart.reset(); // a redirection is followed by another response
    if (startsWithIgnoringCase(line, name)) {
        line.remove_prefix(name.size());
        std::uint64_t start = 0;
        if (std::from_chars(line.data(), line.data() + line.size(), start).ec == std::errc())
            exchange.rangeStart = start;
    }
    return size * count;
}

/// Handles the start of the body. Returns false if the response does not match the request.
bool beginBody(Exchange& exchange) {
    long status = 0;
    curl_easy_getinfo(exchange.handle, CURLINFO_RESPONSE_CODE, &status);
    exchange.received = status == partialContent ? exchange.request.offset : 0;
    if (status == partialContent && exchange.rangeStart != exchange.request.offset) {
        exchange.rangeWasWrong = true;
        return false;
    }
    exchange.hasBegun = true;
    exchange.sink.begin(exchange.received);
    return true;
}

std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto& exchange = *static_cast<Exchange*>(context);
    const std::size_t length = size * count;
    try {
        if (!exchange.hasBegun && !beginBody(exchange))
            return CURL_WRITEFUNC_ERROR;
        if (length > exchange.request.limit ||
            exchange.received > exchange.request.limit - length) {
            exchange.isTooLong = true;
            return CURL_WRITEFUNC_ERROR;
        }
        exchange.sink.bytes({bytes, length});
        exchange.received += length;
        return length;
    } catch (...) {
        exchange.failure = std::current_exception();
        return CURL_WRITEFUNC_ERROR;
    }
}

int onProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<Exchange*>(context)->stop.stop_requested() ? 1 : 0;
}

void prepare(CURL* handle, Exchange& exchange, char* message) {
    const TransferRequest& request = exchange.request;
    const bool isSecure = startsWithIgnoringCase(request.url, "https:");
    curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, maximumRedirections);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_USERAGENT, request.userAgent.c_str());
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, std::lround(request.connectSeconds * 1000));
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, slowestBytesPerSecond);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, std::lround(std::ceil(request.stallSeconds)));
    if (request.offset > 0)
        curl_easy_setopt(handle, CURLOPT_RANGE, (std::to_string(request.offset) + "-").c_str());
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &exchange);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &exchange);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, onProgress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &exchange);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, message);
}

bool isWorthRetrying(CURLcode code, long status) {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_PARTIAL_FILE:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
    case CURLE_WEIRD_SERVER_REPLY:
        return true;
    case CURLE_HTTP_RETURNED_ERROR:
        return status == requestTimeout || status == tooManyRequests || status >= firstServerError;
    default:
        return false;
    }
}

/// A plain text for common failures, else the library's own.
std::string reasonOf(CURLcode code, long status, const char* message) {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
        return localized("the server was not found (no network connection?)");
    case CURLE_COULDNT_CONNECT:
        return localized("no connection to the server");
    case CURLE_OPERATION_TIMEDOUT:
        return localized("the server does not answer or is too slow");
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        return localized("the connection was interrupted");
    case CURLE_HTTP_RETURNED_ERROR:
        return localized("the server reports error %lld", {std::to_string(status)});
    default:
        return *message != '\0' ? message : curl_easy_strerror(code);
    }
}

TransferOutcome outcomeOf(CURLcode code, const Exchange& exchange, const char* message) {
    using Kind = TransferOutcome::Kind;
    long status = 0;
    curl_off_t retryAfter = 0;
    curl_easy_getinfo(exchange.handle, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(exchange.handle, CURLINFO_RETRY_AFTER, &retryAfter);
    TransferOutcome outcome;
    const char* contentType = nullptr;
    curl_easy_getinfo(exchange.handle, CURLINFO_CONTENT_TYPE, &contentType);
    outcome.contentType = contentType ? contentType : "";
    if (retryAfter > 0)
        outcome.retryAfterSeconds = static_cast<double>(retryAfter);
    if (code == CURLE_OK) {
        outcome.kind = Kind::complete;
    } else if (code == CURLE_ABORTED_BY_CALLBACK) {
        outcome.kind = Kind::stopped;
        outcome.reason = localized("stopped");
    } else if (exchange.isTooLong) {
        outcome.reason = localized("the server sent more data than the file has");
    } else if (exchange.rangeWasWrong ||
               (code == CURLE_HTTP_RETURNED_ERROR && status == rangeNotSatisfiable)) {
        outcome.kind = Kind::again;
        outcome.rangeWasWrong = true;
        outcome.reason = localized("the server did not send the requested part of the file");
    } else {
        outcome.kind = isWorthRetrying(code, status) ? Kind::again : Kind::refused;
        outcome.reason = reasonOf(code, status, message);
    }
    return outcome;
}

} // namespace

TransferOutcome transfer(const TransferRequest& request, const TransferSink& sink,
                         const std::stop_token& stop) {
    if (const std::string reason = curlLibrary.load(); !reason.empty())
        throw std::runtime_error(reason);
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    const std::unique_ptr<CURL, decltype(&::curl_easy_cleanup)> handle(
        ready == CURLE_OK ? curl_easy_init() : nullptr, curl_easy_cleanup);
    if (!handle)
        throw std::runtime_error("the download library does not start");
    char message[CURL_ERROR_SIZE] = "";
    Exchange exchange{request, sink, stop, handle.get(), {}, 0, false, false, false, nullptr};
    prepare(handle.get(), exchange, message);
    const CURLcode code = curl_easy_perform(handle.get());
    if (exchange.failure)
        std::rethrow_exception(exchange.failure);
    return outcomeOf(code, exchange, message);
}

} // namespace tessarune
