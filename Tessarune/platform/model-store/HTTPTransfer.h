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
    std::uint64_t limit = 0;  ///< the maximum size of the whole file, in bytes

    double connectSeconds = 15;
    double stallSeconds = 20; ///< the maximum time with less than 100 bytes per second

    std::string userAgent = "Tessarune/" TESSARUNE_VERSION;
};

struct TransferOutcome {
    enum class Kind {
        complete, ///< the whole response has arrived
        again,    ///< worth a retry: interrupted, stalled, unreachable, busy
        refused,  ///< a retry would fail the same way
        stopped   ///< ended by a stop request
    };
    Kind kind = Kind::refused;
    std::string reason; ///< why the transfer is not complete
    std::optional<double> retryAfterSeconds;
    bool rangeWasWrong = false; ///< the server sent another range than requested, or none
    std::string contentType{};  ///< as the server sent it; empty if it sent none
};

/// Receives the data. `begin` is called once before the first byte of an accepted body. Its
/// argument is that byte's offset in the file: the requested offset, or 0 if the server sends the
/// whole file. Exceptions of both functions end the transfer and propagate from `transfer`.
struct TransferSink {
    std::function<void(std::uint64_t offset)> begin;
    std::function<void(std::string_view bytes)> bytes;
};

/// Sends the request and blocks until the transfer has ended. Follows redirections, never from
/// https to http. Throws std::runtime_error if libcurl cannot be used. Any thread.
TransferOutcome transfer(const TransferRequest& request, const TransferSink& sink,
                         const std::stop_token& stop);

} // namespace tessarune
