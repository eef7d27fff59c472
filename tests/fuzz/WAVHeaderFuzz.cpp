// Any bytes as the beginning of a WAV file.
#include "Tessarune/audio/WAVHeader.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessarune;
    // Random bytes rarely contain the signatures of a WAV file, so a flag adds them.
    fuzz::Input input(data, size);
    const bool begins = input.flag();
    const std::string bytes =
        (begins ? std::string("RIFF\0\0\0\0WAVEfmt \x10\0\0\0", 20) : std::string()) +
        std::string(input.rest());
    const auto header = WAVHeader::decoded(bytes);
    if (!header)
        return 0;
    fuzz::require(header->dataOffset >= WAVHeader::size && header->dataOffset <= bytes.size(),
                  "sound that begins outside of the file");
    fuzz::require(header->bytesPerSecond() > 0, "a header with no bytes per second");
    WAVHeader plain = *header;
    plain.dataOffset = WAVHeader::size;
    fuzz::require(WAVHeader::decoded(plain.encoded()) == plain,
                  "a header that changes when written and read");
    return 0;
}
