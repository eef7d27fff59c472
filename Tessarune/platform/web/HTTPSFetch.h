#pragma once

#include "Tessarune/vocabulary/WebFetch.h"

namespace tessarune {

/// A WebFetch that uses only HTTPS and fetches at most four megabytes. Throws std::runtime_error if
/// libcurl cannot be used.
std::optional<WebAnswer> fetchOverHTTPS(const std::string& url, const std::string& userAgent,
                                        const std::stop_token& stop);

} // namespace tessarune
