// Settings that change on one thread while another works with them: what comes out is that of one setting
// from start to end, never of two.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace tavra::test {

// Each of `settings` sets one complete setting. `apply` gives what becomes of the same input every time, as a
// value that compares. Each of `rounds` results, while the settings change, must be that of one of the
// settings. Under ThreadSanitizer also what is torn only now and then is told.
template <class Apply>
void neverTorn(const std::vector<std::function<void()>>& settings, Apply apply, int rounds = 300) {
    using Result = decltype(apply());
    std::vector<Result> allowed;
    for (const auto& set : settings) {
        set();
        const Result result = apply();
        ASSERT_EQ(std::ranges::count(allowed, result), 0) << "settings that give the same show nothing";
        allowed.push_back(result);
    }
    // One change for each result, begun as soon as the result is: in the middle of it, or waiting for its
    // end.
    std::atomic<int> begun{0};
    std::thread setter([&] {
        for (int seen = 0; seen < rounds;) {
            while (begun == seen) std::this_thread::yield();
            seen = begun;
            settings[static_cast<std::size_t>(seen) % settings.size()]();
        }
    });
    int torn = 0;
    for (int i = 1; i <= rounds; ++i) {
        begun = i;
        torn += std::ranges::count(allowed, apply()) == 0;
    }
    setter.join();
    EXPECT_EQ(torn, 0) << "of " << rounds << " results";
}

}  // namespace tavra::test
