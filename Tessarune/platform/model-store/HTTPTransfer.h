#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tessarune {

/// One request for a file or for the remainder of it.
struct TransferRequest {
    std::string url;
    std::uint64_t offset = 0; ///< bytes received already
    std::uint64_t limit = 0;  ///< the maximum total size

    double connectSeconds = 15;
    double stallSeconds = 20; ///< without any data

    std::string userAgent = "Tessarune/" TESSARUNE_VERSION;
};

struct TransferOutcome {
    enum class Kind {
        complete, ///< the server says that this was all
        again,    ///< worth a retry: cut, stalled, unreachable, too busy
        refused,  ///< a retry would fail the same way
        stopped   ///< asked to stop
    };
    Kind kind = Kind::refused;
    std::string reason; ///< why it is not complete
    std::optional<double> retryAfterSeconds;
    bool rangeWasWrong = false; ///< the server sent another range than requested, or none
    std::string contentType{};  ///< as the server wrote it; empty if it did not say
};

/// Receives the data. `begin` is called once before the first byte of an accepted body, with the
/// offset of that byte: that of the request, or 0 if the server sends everything. Their exceptions
/// end the transfer and propagate from `transfer`.
struct TransferSink {
    std::function<void(std::uint64_t offset)> begin;
    std::function<void(std::string_view bytes)> bytes;
};

/// Sends the request and blocks until it is over. Follows redirections, never from https to http.
/// Any thread.
TransferOutcome transfer(const TransferRequest& request, const TransferSink& sink,
                         const std::stop_token& stop);

} // namespace tessarune
