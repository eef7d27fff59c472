#include "Tessarune/platform/model-store/Unpacking.h"

#include "Tessarune/platform/model-store/Checksums.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <zstd.h>

#include <cerrno>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace tessarune {

UnpackingOutcome unpackZstd(const std::filesystem::path& packed, AppendFile& out,
                            std::uint64_t maximumBytes) {
    std::ifstream in(packed, std::ios::binary);
    if (!in)
        throw std::system_error(errno, systemErrors(), packed.string());
    const std::unique_ptr<ZSTD_DStream, decltype(&ZSTD_freeDStream)> stream(ZSTD_createDStream(),
                                                                            &ZSTD_freeDStream);
    if (!stream)
        throw std::runtime_error("the zstd library does not start");

    UnpackingOutcome outcome;
    SHA256 sum;
    std::vector<char> inBuffer(ZSTD_DStreamInSize());
    std::vector<char> outBuffer(ZSTD_DStreamOutSize());
    std::uint64_t written = 0;
    std::size_t wanted = 1; // bytes that the library expects next; 0 at the end of a frame. Not
                            // 0 at first, because an empty file is incomplete.
    while (in.read(inBuffer.data(), static_cast<std::streamsize>(inBuffer.size())),
           in.gcount() > 0) {
        ZSTD_inBuffer input{inBuffer.data(), static_cast<std::size_t>(in.gcount()), 0};
        bool outIsFull = false;
        while (input.pos < input.size || outIsFull) {
            ZSTD_outBuffer output{outBuffer.data(), outBuffer.size(), 0};
            wanted = ZSTD_decompressStream(stream.get(), &output, &input);
            if (ZSTD_isError(wanted) != 0) {
                outcome.failure =
                    localized("it cannot be unpacked: %@", {ZSTD_getErrorName(wanted)});
                return outcome;
            }
            if (output.pos > maximumBytes - written) {
                outcome.failure = localized("its unpacked contents are larger than expected");
                return outcome;
            }
            const std::string_view piece(outBuffer.data(), output.pos);
            out.append(piece);
            sum.update(piece);
            written += output.pos;
            outIsFull = output.pos == output.size && wanted != 0;
        }
    }
    if (in.bad())
        throw std::system_error(EIO, systemErrors(), packed.string());
    if (wanted != 0)
        outcome.failure = localized("it is incomplete and cannot be unpacked");
    outcome.sha256 = sum.hex();
    return outcome;
}

} // namespace tessarune
