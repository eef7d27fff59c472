#pragma once

namespace tessarune::testing {

/// How often a randomised or long test goes round: `count` times, and a tenth of it under a
/// sanitizer, which makes each round take ten times as long.
constexpr unsigned rounds(unsigned count) {
#ifdef TESSARUNE_SANITIZED
    return (count + 9) / 10;
#else
    return count;
#endif
}

} // namespace tessarune::testing
