// A hash over the output of every conversion on fixed input. With TAVRA_HASH_OUT set it is written to that
// file, so that builds for different instruction sets can be compared: their files must be equal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/channel_swap.h"
#include "stages/color_interpolation.h"
#include "stages/grey_spread.h"
#include "stages/multi_roi_image.h"

namespace tavra {
namespace {

constexpr std::uint32_t kWidth = 333;
constexpr std::uint32_t kHeight = 37;

// FNV-1a, 64 bits.
class Hash {
  public:
    template <class Sample>
    void add(const Sample* samples, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            for (unsigned b = 0; b < sizeof(Sample); ++b) {
                value_ = (value_ ^ (samples[i] >> (8 * b) & 0xFFu)) * 0x100000001B3u;
            }
        }
    }
    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 0xCBF29CE484222325u;
};

template <class Sample>
std::vector<Sample> fixedSamples(std::size_t count, unsigned maximum, std::size_t offset) {
    std::vector<Sample> samples(count + offset);
    std::uint32_t state = 1;
    for (std::size_t i = offset; i < samples.size(); ++i) {
        state = state * 1664525u + 1013904223u;
        samples[i] = static_cast<Sample>((state >> 16) & maximum);
    }
    return samples;
}

template <class Sample>
void addInterpolation(Hash& hash, std::size_t offset) {
    CColorInterpolation stage;
    const auto frame =
        fixedSamples<Sample>(std::size_t{kWidth} * kHeight * 3, sizeof(Sample) == 1 ? 0xFF : 0xFFF, offset);
    for (std::uint16_t array = 1; array <= 19; ++array) {
        for (std::uint8_t method = 0; method <= 6; ++method) {
            for (std::uint16_t pitch : {3, 4}) {
                std::vector<Sample> image(std::size_t{kWidth + 3} * kHeight * pitch + offset, 0x11);
                const Sample* const source = frame.data() + offset;
                Sample* const out = image.data() + offset;
                std::uint32_t result = 0;
                if constexpr (sizeof(Sample) == 1) {
                    result = stage.Convert(kWidth, kHeight, source, out, method, array, pitch);
                } else {
                    result = stage.Convert16(kWidth, kHeight, source, out, method, array, pitch);
                }
                ASSERT_EQ(result, 0u);
                hash.add(out, image.size() - offset);
            }
        }
    }
}

void addConversions(Hash& hash, std::size_t offset) {
    const auto frame = fixedSamples<std::uint8_t>(std::size_t{kWidth} * kHeight * 4, 0xFF, offset);
    std::vector<std::uint8_t> image(std::size_t{kWidth + 3} * kHeight * 4 + offset);
    std::uint8_t* const out = image.data() + offset;
    for (std::uint32_t code : {2, 64, 4, 128, 8, 256, 16, 512, 0x10000, 0x100000, 0x20000, 0x200000}) {
        ASSERT_TRUE(reduceTo8Bits(kWidth, kHeight, code, frame.data() + offset, out));
        hash.add(out, std::size_t{kWidth} * kHeight);
    }
    for (std::uint32_t code : {1024, 2048}) {
        for (std::uint32_t format : {1, 4, 8}) {
            ASSERT_TRUE(convertBgrFrame(code, kWidth, kHeight, frame.data() + offset, format, out).ok());
            hash.add(out, image.size() - offset);
        }
    }
    for (std::uint32_t format : {4, 8}) {
        ASSERT_TRUE(spreadGreyInPlace(kWidth, kHeight, format, out).ok());
        hash.add(out, image.size() - offset);
    }
    swapRedBlue24(kWidth, kHeight, out);
    hash.add(out, image.size() - offset);
}

// Four regions, of which two overlap.
class FixedRegions final : public IRegionInfo {
  public:
    std::uint32_t GetMaxROICount() override { return 4; }
    std::uint32_t GetROIMode() override { return 0; }
    void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                std::uint32_t* width, std::uint32_t* height) override {
        *enabled = 1;
        *x = index * 150;
        *y = index / 2 * 40;
        *width = 101 + 33 * index;
        *height = 9;
    }
    std::uint32_t GetROIGroup() override { return 4; }
};

void addRegions(Hash& hash, std::size_t offset) {
    CMultiROIImage stage;
    FixedRegions regions;
    stage.Setup(&regions, 4);
    std::uint64_t frameId = 0;
    for (std::uint64_t bits : {8, 10, 12, 16, 24}) {
        const std::size_t size = std::size_t{kWidth} * kHeight * 3;
        auto frame = fixedSamples<std::uint8_t>(size, 0xFF, offset);
        const std::uint8_t* const image =
            stage.Compose(++frameId, frame.data() + offset, size, 0x01000000 | bits << 16);
        ASSERT_NE(image, nullptr);
        hash.add(image, stage.GetComposedStride() * stage.GetComposedSize(1));
    }
}

std::uint64_t hashAt(std::size_t offset) {
    Hash hash;
    addInterpolation<std::uint8_t>(hash, offset);
    addInterpolation<std::uint16_t>(hash, offset);
    addConversions(hash, offset);
    addRegions(hash, offset);
    return hash.value();
}

TEST(StageOutput, IsTheSameAtEveryAlignment) {
    const std::uint64_t hash = hashAt(0);
    for (std::size_t offset : {1, 3, 5, 16}) ASSERT_EQ(hashAt(offset), hash) << offset;
    if (const char* const path = std::getenv("TAVRA_HASH_OUT")) {
        std::ofstream file(path);
        file << "stages " << std::hex << hash << '\n';
        ASSERT_TRUE(file.good()) << path;
    }
}

}  // namespace
}  // namespace tavra
