// A hash over the output of every conversion on fixed input. With TAVRA_HASH_OUT set it is written to that
// file, so that builds for different instruction sets can be compared: their files must be equal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <vector>

#include "stages/bgr_conversion.h"
#include "stages/bit_reduction.h"
#include "stages/channel_swap.h"
#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/grey_spread.h"
#include "stages/multi_roi_image.h"
#include "stages/noise_reduction.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"
#include "stages/wb.h"

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

// A stage that works in place, on fixed images of both depths and of three and four samples a pixel.
template <class Stage8, class Stage16>
void addImages(Hash& hash, std::size_t offset, Stage8 stage8, Stage16 stage16) {
    for (const std::uint32_t pitch : {3, 4}) {
        const std::size_t count = std::size_t{kWidth + 3} * kHeight * pitch;
        auto bytes = fixedSamples<std::uint8_t>(count, 0xFF, offset);
        ASSERT_EQ(stage8(pitch == 3 ? 4u : 8u, bytes.data() + offset), 0u);
        hash.add(bytes.data() + offset, count);
        auto words = fixedSamples<std::uint16_t>(count, 0xFFF, offset);
        ASSERT_EQ(stage16(pitch == 3 ? 256u : 512u, words.data() + offset), 0u);
        hash.add(words.data() + offset, count);
    }
}

void addColorMatrix(Hash& hash, std::size_t offset) {
    const auto stage = std::make_unique<CColorMatrix>();
    const auto add = [&] {
        addImages(
            hash, offset,
            [&](std::uint32_t format, std::uint8_t* image) {
                return stage->Apply8(kWidth, kHeight, 0, format, image, 8);
            },
            [&](std::uint32_t format, std::uint16_t* image) {
                return stage->Apply16(kWidth, kHeight, 0, format, image, 12);
            });
    };
    const std::int16_t usual[12] = {172, -51, -21, 300, -33, 158, -25, -150, 4, -61, 157, 0};
    const std::int16_t extreme[12] = {32767, 9, -32768, 0, 1, 12345, -9876, 32767, -32768, 30000, 32767, 5};
    for (const std::int16_t* const matrix : {usual, extreme}) {
        ASSERT_EQ(stage->SetColorMatrix(0xFF, matrix), 0u);
        for (const int hue : {0, 123, -450, 1799}) {
            ASSERT_EQ(stage->SetHueSaturation(1, static_cast<std::int16_t>(hue), 137), 0u);
            add();
        }
    }
}

// A stage on fixed samples in place; `apply` gives its result.
template <class Sample, class Apply>
void addInPlace(Hash& hash, std::size_t channels, unsigned maximum, std::size_t offset, Apply apply) {
    auto image = fixedSamples<Sample>(std::size_t{kWidth + 3} * kHeight * channels, maximum, offset);
    ASSERT_EQ(apply(image.data() + offset), 0u);
    hash.add(image.data() + offset, image.size() - offset);
}

void addSharpness(Hash& hash, std::size_t offset) {
    CSharpness stage;
    stage.SetMode(1, 130, 5);
    for (std::uint32_t format : {1, 4, 8}) {
        addInPlace<std::uint8_t>(hash, 4, 0xFF, offset, [&](std::uint8_t* image) {
            return stage.Apply8(kWidth, kHeight, 0, format, image, 8);
        });
    }
    for (std::uint32_t format : {2, 256, 512}) {
        addInPlace<std::uint16_t>(hash, 4, 0xFFF, offset, [&](std::uint16_t* image) {
            return stage.Apply16(kWidth, kHeight, 0, format, image, 12);
        });
    }
}

void addWhiteBalance(Hash& hash, std::size_t offset) {
    CWB stage;
    const std::uint16_t gains[4] = {300, 128, 127, 77};
    stage.SetGains(gains);
    for (std::uint8_t mode : {1, 3}) {
        stage.SetMode(mode);
        addInPlace<std::uint8_t>(hash, 1, 0xFF, offset, [&](std::uint8_t* frame) {
            return stage.Apply8(kWidth, kHeight, 0, 3, frame, 8);
        });
        stage.SetMode(mode);
        addInPlace<std::uint16_t>(hash, 1, 0xFFF, offset, [&](std::uint16_t* frame) {
            return stage.Apply16(kWidth, kHeight, 0, 4, frame, 12);
        });
    }
}

void addNoiseReduction(Hash& hash, std::size_t offset) {
    CNoiseReduction stage;
    for (std::uint16_t array : {1, 2}) {
        for (std::uint32_t mode : {TAVRA_NOISE_REDUCTION_MEDIAN, TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME,
                                   TAVRA_NOISE_REDUCTION_DARK_FRAME}) {
            stage.setMode(mode);
            const unsigned maximum = mode == TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME ? 0x1F : 0xFF;
            addInPlace<std::uint8_t>(hash, 1, maximum, offset, [&](std::uint8_t* frame) {
                return stage.Process(kWidth, kHeight, array, frame) ? 0u : 1u;
            });
        }
    }
}

void addGamma(Hash& hash, std::size_t offset) {
    const auto stage = std::make_unique<CGamma>();
    for (std::uint8_t index = 0; index < 5; ++index) {
        const auto gamma = static_cast<std::uint16_t>(45 + 60 * index);
        ASSERT_EQ(stage->SetGamma(index, 1 + index % 2, gamma, static_cast<std::int16_t>(7 * index - 9), 13,
                                  nullptr, index % 2 == 0 ? 8 : 12),
                  0u);
    }
    addImages(
        hash, offset,
        [&](std::uint32_t format, std::uint8_t* image) {
            return stage->ApplyImage8(kWidth, kHeight, 0, format, image);
        },
        [&](std::uint32_t format, std::uint16_t* image) {
            return stage->ApplyImage16(kWidth, kHeight, 0, format, image);
        });
    const std::size_t count = std::size_t{kWidth + 3} * kHeight;
    for (const std::uint16_t array : {2, 3, 4, 5}) {
        auto bytes = fixedSamples<std::uint8_t>(count, 0xFF, offset);
        ASSERT_EQ(stage->ApplyRaw8(kWidth, kHeight, 0, array, bytes.data() + offset), 0u);
        hash.add(bytes.data() + offset, count);
        auto words = fixedSamples<std::uint16_t>(count, 0xFFF, offset);
        ASSERT_EQ(stage->ApplyRaw16(kWidth, kHeight, 0, array, words.data() + offset), 0u);
        hash.add(words.data() + offset, count);
    }
}

void addChroma(Hash& hash, std::size_t offset) {
    CChromaSuppress stage;
    for (const std::uint16_t strength : {3, 255, 20000}) {
        ASSERT_EQ(stage.SetLowThreshold(90), 0u);
        ASSERT_EQ(stage.SetLowStrength(strength), 0u);
        ASSERT_EQ(stage.SetHighThreshold(160), 0u);
        ASSERT_EQ(stage.SetHighStrength(strength), 0u);
        addImages(
            hash, offset,
            [&](std::uint32_t format, std::uint8_t* image) {
                return stage.Apply8(kWidth, kHeight, 0, format, image);
            },
            [&](std::uint32_t format, std::uint16_t* image) {
                return stage.Apply16(kWidth, kHeight, 0, format, image);
            });
    }
}

// Every mirror and turn, into another buffer and in place.
template <class Sample>
void addFlips(Hash& hash, std::size_t offset) {
    CFlip stage;
    for (std::uint16_t samples : {1, 3, 4}) {
        const std::size_t count = std::size_t{kWidth} * kHeight * samples;
        for (std::uint8_t modes = 1; modes < 12; ++modes) {
            auto image = fixedSamples<Sample>(count, 0xFFFF, offset);
            std::vector<Sample> turned(image.size(), 0x11);
            for (Sample* const out : {turned.data() + offset, image.data() + offset}) {
                std::uint32_t width = kWidth, height = kHeight, result = 0;
                const auto mirror = static_cast<std::uint8_t>(modes & 3);
                const auto rotation = static_cast<std::uint8_t>(modes >> 2);
                if constexpr (sizeof(Sample) == 1) {
                    result =
                        stage.Flip8(mirror, rotation, &width, &height, image.data() + offset, out, samples);
                } else {
                    result =
                        stage.Flip16(mirror, rotation, &width, &height, image.data() + offset, out, samples);
                }
                ASSERT_EQ(result, 0u);
                hash.add(out, count);
            }
        }
    }
}

// A calibration of two frames, and all corrections by its maps.
template <class Sample>
void addShading(Hash& hash, std::size_t offset) {
    constexpr std::uint16_t kBits = sizeof(Sample) == 1 ? 8 : 12;
    CShadingCorrection stage;
    const auto apply = [&](std::uint32_t mode, std::uint32_t stride, unsigned maximum) {
        auto frame = fixedSamples<Sample>(std::size_t{kWidth} * kHeight * 4, maximum, offset);
        Sample* const samples = frame.data() + offset;
        if (mode != 0) stage.SetMode(mode);  // else the calibration goes on
        if constexpr (sizeof(Sample) == 1) {
            ASSERT_EQ(stage.Apply8(kWidth, kHeight, stride, samples, kBits), 0u);
        } else {
            ASSERT_EQ(stage.Apply16(kWidth, kHeight, stride, samples, kBits), 0u);
        }
        hash.add(samples, frame.size() - offset);
    };
    for (std::uint32_t correction : {2, 4}) {
        stage.SetColorArray(2);
        stage.SetTargets(200);  // of position 0; the others are measured
        apply(1, 4 * kWidth, 0xFF);
        apply(0, 4 * kWidth, 0x3F);
        apply(correction, 0, (1u << kBits) - 1);
        apply(correction, 4 * kWidth, 0x7F);
        apply(255, 0, 0xFF);
        std::vector<std::uint32_t> map(std::size_t{kWidth} * kHeight);
        stage.GetMap(nullptr, nullptr, nullptr, map.data());
        hash.add(map.data(), map.size());
    }
}

std::uint64_t hashAt(std::size_t offset) {
    Hash hash;
    addInterpolation<std::uint8_t>(hash, offset);
    addInterpolation<std::uint16_t>(hash, offset);
    addConversions(hash, offset);
    addRegions(hash, offset);
    addColorMatrix(hash, offset);
    addGamma(hash, offset);
    addChroma(hash, offset);
    addSharpness(hash, offset);
    addWhiteBalance(hash, offset);
    addNoiseReduction(hash, offset);
    addFlips<std::uint8_t>(hash, offset);
    addFlips<std::uint16_t>(hash, offset);
    addShading<std::uint8_t>(hash, offset);
    addShading<std::uint16_t>(hash, offset);
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
