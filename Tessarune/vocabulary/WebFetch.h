#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace tessarune {

/// An answer with a status of 2xx.
struct WebAnswer {
    std::string contentType; ///< in lower case, "audio/mpeg"
    std::string body;
};

/// Seam: fetches what is at an address and blocks until it has arrived. Returns `nullopt` for any
/// other status, without a network, and after a stop request. Any thread.
using WebFetch = std::function<std::optional<WebAnswer>(
    const std::string& url, const std::string& userAgent, const std::stop_token& stop)>;

} // namespace tessarune
