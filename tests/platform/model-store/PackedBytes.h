#pragma once

#include "Tessarune/platform/model-store/Checksums.h"

#include <zstd.h>

#include <string>

namespace tessarune::testing {

inline std::string packed(const std::string& bytes) {
    std::string out(ZSTD_compressBound(bytes.size()), '\0');
    out.resize(ZSTD_compress(out.data(), out.size(), bytes.data(), bytes.size(), 1));
    return out;
}

inline std::string sha256Of(const std::string& bytes) {
    SHA256 sum;
    sum.update(bytes);
    return sum.hex();
}

} // namespace tessarune::testing
