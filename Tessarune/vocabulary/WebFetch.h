#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace tessarune {

/// What a server answered with a status of 2xx.
struct WebAnswer {
    std::string contentType; ///< in lower case, "audio/mpeg"
    std::string body;
};

/// Seam: fetches what is at an address and blocks until it is there. Nothing for every other
/// status, without a network, or once a stop was requested. Any thread.
using WebFetch = std::function<std::optional<WebAnswer>(
    const std::string& url, const std::string& userAgent, const std::stop_token& stop)>;

} // namespace tessarune
