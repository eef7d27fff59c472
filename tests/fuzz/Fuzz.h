#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// The entry point that libFuzzer calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tessarune::fuzz {

/// Aborts the run unless `holds`, so that the fuzzer keeps the input.
inline void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

/// Splits an input from front to back; returns zeros and empty texts once it is used up.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    std::uint8_t byte() {
        if (rest_.empty())
            return 0;
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }
    bool flag() { return byte() & 1; }
    /// Up to the next line feed.
    std::string line() {
        const auto end = rest_.find('\n');
        std::string result(rest_.substr(0, end));
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return result;
    }
    std::string_view rest() const { return rest_; }

  private:
    std::string_view rest_;
};

} // namespace tessarune::fuzz
