// What the interpolation allocates, and many threads on one object.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "stages/color_interpolation.h"
#include "support/failing_allocations.h"

namespace tavra {
namespace {

using test::FailAllocationsFrom;

constexpr std::uint32_t kSize = 64;

TEST(InterpolationMemory, AQuadMosaicWithoutMemoryForItsReductionIsCodeEightAndWritesNothing) {
    const std::vector<std::uint8_t> bytes(kSize * kSize, 7);
    const std::vector<std::uint16_t> words(kSize * kSize, 7);
    std::vector<std::uint8_t> byteImage(kSize * kSize * 3, 9);
    std::vector<std::uint16_t> wordImage(kSize * kSize * 3, 9);
    CColorInterpolation stage;
    for (std::uint16_t array = 16; array <= 19; ++array) {
        for (std::uint8_t method = 1; method <= 6; ++method) {
            std::uint32_t results[2];
            {
                const FailAllocationsFrom all(0);
                results[0] = stage.Convert(kSize, kSize, bytes.data(), byteImage.data(), method, array, 3);
                results[1] = stage.Convert16(kSize, kSize, words.data(), wordImage.data(), method, array, 3);
            }
            EXPECT_EQ(results[0], 8u) << array << ", method " << int{method};
            EXPECT_EQ(results[1], 8u) << array << ", method " << int{method};
        }
    }
    EXPECT_EQ(byteImage, std::vector<std::uint8_t>(byteImage.size(), 9));
    EXPECT_EQ(wordImage, std::vector<std::uint16_t>(wordImage.size(), 9));
}

TEST(InterpolationMemory, NothingIsAllocatedForTheOtherArrays) {
    const std::vector<std::uint16_t> samples(kSize * kSize * 3, 7);  // enough for YCbCr 4:4:4
    std::vector<std::uint16_t> image(kSize * kSize * 4);
    const auto* const bytes = static_cast<const std::uint8_t*>(static_cast<const void*>(samples.data()));
    auto* const byteImage = static_cast<std::uint8_t*>(static_cast<void*>(image.data()));
    CColorInterpolation stage;
    for (std::uint16_t array = 1; array <= 15; ++array) {
        for (std::uint8_t method = 0; method <= 6; ++method) {
            for (std::uint16_t pitch : {3, 4}) {
                std::uint32_t results[2];
                std::size_t failures = 0;
                {
                    const FailAllocationsFrom all(0);
                    results[0] = stage.Convert(kSize, kSize, bytes, byteImage, method, array, pitch);
                    results[1] =
                        stage.Convert16(kSize, kSize, samples.data(), image.data(), method, array, pitch);
                    failures = FailAllocationsFrom::failures();
                }
                EXPECT_EQ(results[0], 0u);
                EXPECT_EQ(results[1], 0u);
                EXPECT_EQ(failures, 0u) << array << ", method " << int{method};
            }
        }
    }
}

TEST(InterpolationThreads, ManyWorkOnOneObject) {
    constexpr std::size_t kThreads = 6;
    std::vector<std::uint8_t> samples(kSize * kSize);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::uint8_t>(i * 31 + i / 64);
    CColorInterpolation stage;
    // What each thread should see: a mosaic and a quad mosaic under every method, one after the other.
    const auto convertAll = [&](std::vector<std::uint8_t>& images) {
        constexpr std::size_t kImage = kSize * kSize * 3;
        std::size_t done = 0;
        for (std::uint16_t array : {2, 17}) {
            for (std::uint8_t method = 1; method <= 6; ++method, ++done) {
                stage.Convert(kSize, kSize, samples.data(), images.data() + done * kImage, method, array, 3);
            }
        }
    };
    std::vector<std::uint8_t> wanted(kSize * kSize * 3 * 12);
    convertAll(wanted);
    std::vector<std::vector<std::uint8_t>> images(kThreads, std::vector<std::uint8_t>(wanted.size()));
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20; ++i) convertAll(images[t]);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& image : images) EXPECT_EQ(image, wanted);
}

}  // namespace
}  // namespace tavra
