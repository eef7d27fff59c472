#include "Tessarune/display/SharedVector.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <vector>

namespace tessarune {
namespace {

/// Compares every operation with a plain vector; copies taken at any time stay unchanged.
RC_GTEST_PROP(SharedVectorTests, BehavesLikeAVector, ()) {
    SharedVector<int> list;
    std::vector<int> expected;
    std::vector<std::pair<SharedVector<int>, std::vector<int>>> copies;
    const int operations = *rc::gen::inRange(1, 60);
    for (int value = 0; value < operations; ++value) {
        const auto index = [&](std::size_t limit) {
            return *rc::gen::inRange<std::size_t>(0, limit + 1);
        };
        // `inRange` would yield only low values in the first runs.
        const int operation = *rc::gen::element(0, 1, 2, 3, 4, 5);
        if (operation < 2) { // nodes hold 32: one element, about one node, or several levels
            for (int i = *rc::gen::element(1, 31, 33, 700); i > 0; --i) {
                list.push_back(value + i);
                expected.push_back(value + i);
            }
        } else if (operation == 2 && !expected.empty()) {
            const std::size_t at = index(expected.size() - 1);
            list.set(at, -value);
            expected[at] = -value;
        } else if (operation == 3) {
            const std::size_t size = index(expected.size());
            list.truncate(size);
            expected.resize(size);
        } else if (operation == 4) {
            const std::size_t last = index(expected.size());
            const std::size_t first = index(last);
            const std::vector<int> with(index(40), value);
            list.replace(first, last, SharedVector<int>(with));
            const auto at = expected.erase(expected.begin() + std::ptrdiff_t(first),
                                           expected.begin() + std::ptrdiff_t(last));
            expected.insert(at, with.begin(), with.end());
        } else {
            copies.emplace_back(list, expected);
        }
    }
    copies.emplace_back(list, expected);
    for (const auto& [copy, then] : copies) {
        RC_ASSERT(std::vector<int>(copy.begin(), copy.end()) == then);
        RC_ASSERT(copy == SharedVector<int>(then));
        // Elements that are not reported as unshared are equal.
        std::vector<int> updated = then;
        list.forEachUnshared(copy, [&](std::size_t at) { updated.at(at) = expected.at(at); });
        const auto common = std::ptrdiff_t(std::min(updated.size(), expected.size()));
        RC_ASSERT(std::equal(updated.begin(), updated.begin() + common, expected.begin()));
        copy.forEachUnshared(copy, [&](std::size_t) { RC_FAIL("a list differs from itself"); });
    }
}

} // namespace
} // namespace tessarune
