#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tessarune {

/// One request for a file or for the rest of it.
struct TransferRequest {
    std::string url;
    std::uint64_t offset = 0; ///< bytes that are here already
    std::uint64_t limit = 0;  ///< more bytes in all than this are refused

    double connectSeconds = 15;
    double stallSeconds = 20; ///< without a sign of life

    std::string userAgent = "Tessarune/" TESSARUNE_VERSION;
};

struct TransferOutcome {
    enum class Kind {
        complete, ///< the server says that this was all
        again,    ///< worth another try: cut, stalled, not reached, too busy
        refused,  ///< another try would end the same
        stopped   ///< asked to stop
    };
    Kind kind = Kind::refused;
    std::string reason; ///< why it is not complete
    std::optional<double> retryAfterSeconds;
    bool rangeWasWrong = false; ///< the server sent another part than was asked for, or none
    std::string contentType{};  ///< as the server wrote it; empty if it did not say
};

/// Takes what arrives. `begin` is called once before the first byte of a body that is wanted, with
/// the offset from which it counts: that of the request, or 0 where the server sends everything.
/// What they throw ends the transfer and comes out of `transfer`.
struct TransferSink {
    std::function<void(std::uint64_t offset)> begin;
    std::function<void(std::string_view bytes)> bytes;
};

/// Makes the request and blocks until it is over. Follows redirections, never from https to http.
/// Any thread.
TransferOutcome transfer(const TransferRequest& request, const TransferSink& sink,
                         const std::stop_token& stop);

} // namespace tessarune
