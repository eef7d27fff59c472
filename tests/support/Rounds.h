#pragma once

namespace tessarune::testing {

/// The number of rounds of a randomised or long test: `count`, or a tenth of it under a sanitizer,
/// which makes each round take ten times as long.
constexpr unsigned rounds(unsigned count) {
#ifdef TESSARUNE_SANITIZED
    return (count + 9) / 10;
#else
    return count;
#endif
}

} // namespace tessarune::testing
