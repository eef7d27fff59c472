#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace tessarune {

/// The answer to a successful request (status 2xx).
struct WebAnswer {
    std::string contentType; ///< in lower case, "audio/mpeg"
    std::string body;
};

/// Interface: fetches the content of an address and blocks until it has arrived. Returns `nullopt`
/// on any failure, such as a status other than 2xx or a missing network, and after a stop request.
/// Any thread.
using WebFetch = std::function<std::optional<WebAnswer>(
    const std::string& url, const std::string& userAgent, const std::stop_token& stop)>;

} // namespace tessarune
