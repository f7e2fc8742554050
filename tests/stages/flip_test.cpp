#include "stages/flip.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "platform/last_error.h"
#include "stages/factory.h"
#include "support/failing_allocations.h"

namespace tavra {
namespace {

using test::FailAllocationsFrom;
using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;

// The numbered operations: what each makes of the pixel at (x, y) of a w x h image.
constexpr bool turns(int op) {
    return op >= 4;
}

struct Place {
    std::size_t x, y;
};

Place placeOf(int op, std::size_t x, std::size_t y, std::size_t w, std::size_t h) {
    switch (op) {
        case 1: return {w - 1 - x, y};
        case 2: return {x, h - 1 - y};
        case 3: return {w - 1 - x, h - 1 - y};
        case 4: return {h - 1 - y, x};
        case 5: return {y, w - 1 - x};
        case 6: return {h - 1 - y, w - 1 - x};
        case 7: return {y, x};
        default: return {x, y};
    }
}

int operationOf(u8 mirror, u8 rotation) {
    static constexpr int kClockwise[] = {4, 6, 7, 5};
    static constexpr int kAnticlockwise[] = {5, 7, 6, 4};
    const int m = mirror & 3;
    return rotation == 1 ? kClockwise[m] : rotation == 2 ? kAnticlockwise[m] : m;
}

// A mirror and a rotation mode for each operation.
struct Modes {
    u8 mirror, rotation;
};
constexpr Modes kModesOf[8] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {0, 1}, {0, 2}, {1, 1}, {2, 1}};

template <class Sample>
u32 callFlip(CFlip& stage, Modes modes, u32& width, u32& height, const Sample* source, Sample* destination,
             u16 samples) {
    if constexpr (sizeof(Sample) == 1) {
        return stage.Flip8(modes.mirror, modes.rotation, &width, &height, source, destination, samples);
    } else {
        return stage.Flip16(modes.mirror, modes.rotation, &width, &height, source, destination, samples);
    }
}

// The result pixel by pixel, over what the destination held before.
template <class Sample>
void plainFlip(int op, std::size_t w, std::size_t h, const std::vector<Sample>& source,
               std::vector<Sample>& destination, std::size_t samples) {
    const std::size_t resultWidth = turns(op) ? h : w;
    const std::size_t moved = turns(op) && samples == 4 ? 3 : samples;
    for (std::size_t y = 0; y < h; ++y) {
        for (std::size_t x = 0; x < w; ++x) {
            const Place place = placeOf(op, x, y, w, h);
            for (std::size_t s = 0; s < moved; ++s) {
                destination[(place.y * resultWidth + place.x) * samples + s] =
                    source[(y * w + x) * samples + s];
            }
        }
    }
}

template <class Sample>
std::vector<Sample> noise(std::mt19937& random, std::size_t count) {
    std::vector<Sample> samples(count);
    for (Sample& s : samples) s = static_cast<Sample>(random());
    return samples;
}

// Each operation on one image, into another buffer and in place. Something behind the buffer's end must stay,
// and memory behind the source's end is nobody's.
template <class Sample>
void checkAllOperations(std::mt19937& random, u32 w, u32 h, u16 samples) {
    constexpr std::size_t kGuard = 8;
    CFlip stage;
    const std::size_t count = std::size_t{w} * h * samples;
    for (int op = 1; op <= 7; ++op) {
        const auto source = noise<Sample>(random, count + kGuard);
        const auto before = noise<Sample>(random, count + kGuard);
        const std::vector<Sample> image(source.begin(), source.end() - kGuard);
        auto wanted = before, result = before;
        plainFlip(op, w, h, image, wanted, samples);
        u32 width = w, height = h;
        ASSERT_EQ(callFlip(stage, kModesOf[op], width, height, image.data(), result.data(), samples), 0u);
        EXPECT_EQ(width, turns(op) ? h : w);
        EXPECT_EQ(height, turns(op) ? w : h);
        ASSERT_EQ(result, wanted) << "op " << op << ", " << w << " x " << h << " x " << samples;

        wanted = source, result = source;
        plainFlip(op, w, h, source, wanted, samples);
        width = w, height = h;
        ASSERT_EQ(callFlip(stage, kModesOf[op], width, height, result.data(), result.data(), samples), 0u);
        ASSERT_EQ(result, wanted) << "in place, op " << op << ", " << w << " x " << h << " x " << samples;
    }
}

template <class Sample>
class FlipOf : public testing::Test {};
using Samples = testing::Types<u8, u16>;
TYPED_TEST_SUITE(FlipOf, Samples);

TYPED_TEST(FlipOf, EveryOperationOnSmallImagesOfEverySize) {
    std::mt19937 random(1);
    for (const u16 samples : {1, 3, 4}) {
        for (u32 w = 1; w <= 19; w += w < 6 ? 1 : 4) {
            for (u32 h = 1; h <= 19; h += h < 6 ? 1 : 4) {
                checkAllOperations<TypeParam>(random, w, h, samples);
            }
        }
    }
}

TYPED_TEST(FlipOf, EveryOperationOnImagesOfSeveralPieces) {
    std::mt19937 random(2);
    const std::array<u32, 2> sizes[] = {{300, 41}, {20, 1100}, {257, 33}, {513, 17}, {700, 3}, {3, 700}};
    for (const auto& [w, h] : sizes) {
        for (const u16 samples : {1, 3, 4}) checkAllOperations<TypeParam>(random, w, h, samples);
    }
}

// Of many bands and stripes.
TYPED_TEST(FlipOf, AQuarterTurnOfALargeImage) {
    const u32 w = 4101 / sizeof(TypeParam), h = 2055;
    std::vector<TypeParam> source(std::size_t{w} * h);
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<TypeParam>(i * 2654435761u >> 13);
    std::vector<TypeParam> wanted(source.size()), result(source.size());
    plainFlip(5, w, h, source, wanted, 1);
    CFlip stage;
    u32 width = w, height = h;
    ASSERT_EQ(callFlip(stage, kModesOf[5], width, height, source.data(), result.data(), 1), 0u);
    EXPECT_TRUE(result == wanted);
}

TYPED_TEST(FlipOf, RandomSizes) {
    std::mt19937 random(3);
    for (int i = 0; i < 5; ++i) {
        constexpr u16 kSamples[] = {1, 3, 4};
        checkAllOperations<TypeParam>(random, 1 + random() % 200, 1 + random() % 200, kSamples[random() % 3]);
    }
}

TYPED_TEST(FlipOf, EmptyImagesExchangeTheirSidesAndNothingElse) {
    CFlip stage;
    TypeParam sample = 7;
    for (int op = 1; op <= 7; ++op) {
        for (const auto& [w, h] : {std::array<u32, 2>{0, 5}, {5, 0}, {0, 0}}) {
            u32 width = w, height = h;
            EXPECT_EQ(callFlip(stage, kModesOf[op], width, height, &sample, &sample, 3), 0u);
            EXPECT_EQ(width, turns(op) ? h : w);
            EXPECT_EQ(height, turns(op) ? w : h);
        }
    }
    EXPECT_EQ(sample, 7);
}

TYPED_TEST(FlipOf, PixelsOfOtherSizesAreBadArgumentsAndNothingChanges) {
    CFlip stage;
    const std::vector<TypeParam> source(64, 1);
    for (int op = 1; op <= 7; ++op) {
        for (const u16 samples : {0, 2, 5, 6, 8, 256, 65535}) {
            std::vector<TypeParam> result(64, 2);
            u32 width = 2, height = 3;
            platform::setLastSystemError(0);
            EXPECT_EQ(callFlip(stage, kModesOf[op], width, height, source.data(), result.data(), samples),
                      87u);
            EXPECT_EQ(platform::lastSystemError(), 87u);
            EXPECT_EQ(result, std::vector<TypeParam>(64, 2));
            EXPECT_EQ(width, 2u);
            EXPECT_EQ(height, 3u);
        }
    }
}

TYPED_TEST(FlipOf, NothingToTurnSucceedsWithAnyPixelsAndCopiesNothing) {
    CFlip stage;
    const std::vector<TypeParam> source(24, 1);
    for (const u8 mirror : {0, 4, 16, 32, 48, 0xFC}) {
        for (const u8 rotation : {0, 3, 4, 255}) {
            for (const u16 samples : {0, 1, 2, 3, 4, 9}) {
                std::vector<TypeParam> result(24, 2);
                u32 width = 2, height = 3;
                EXPECT_EQ(
                    callFlip(stage, {mirror, rotation}, width, height, source.data(), result.data(), samples),
                    0u);
                EXPECT_EQ(result, std::vector<TypeParam>(24, 2));
                EXPECT_EQ(width, 2u);
                EXPECT_EQ(height, 3u);
            }
        }
    }
}

TYPED_TEST(FlipOf, NullPointersAreBadArguments) {
    CFlip stage;
    TypeParam sample = 7;
    u32 size = 1;
    const auto flip = [&](u32* width, u32* height, const TypeParam* source, TypeParam* destination) {
        if constexpr (sizeof(TypeParam) == 1) {
            return stage.Flip8(1, 0, width, height, source, destination, 1);
        } else {
            return stage.Flip16(1, 0, width, height, source, destination, 1);
        }
    };
    EXPECT_EQ(flip(nullptr, &size, &sample, &sample), 87u);
    EXPECT_EQ(flip(&size, nullptr, &sample, &sample), 87u);
    EXPECT_EQ(flip(&size, &size, nullptr, &sample), 87u);
    EXPECT_EQ(flip(&size, &size, &sample, nullptr), 87u);
}

TYPED_TEST(FlipOf, AQuarterTurnInPlaceWithoutMemoryLeavesTheFrame) {
    std::mt19937 random(4);
    CFlip stage;
    constexpr u32 kSize = 100;
    const auto image = noise<TypeParam>(random, kSize * kSize * 3);
    for (int op = 4; op <= 7; ++op) {
        auto result = image;
        u32 width = kSize, height = kSize, code = 0;
        platform::setLastSystemError(0);
        {
            const FailAllocationsFrom all(0);
            code = callFlip(stage, kModesOf[op], width, height, result.data(), result.data(), 3);
        }
        EXPECT_EQ(code, 8u);
        EXPECT_EQ(platform::lastSystemError(), 8u);
        EXPECT_EQ(result, image);
    }
    // A size that no memory holds.
    u32 width = 0xFFFFFFFF, height = 0xFFFFFFFF;
    auto result = image;
    EXPECT_EQ(callFlip(stage, kModesOf[4], width, height, result.data(), result.data(), 4), 8u);
    EXPECT_EQ(result, image);
}

TYPED_TEST(FlipOf, OnlyAQuarterTurnInPlaceAllocatesAndOnlyToGrow) {
    CFlip stage;
    std::vector<TypeParam> image(40 * 30), other(40 * 30);
    const auto failures = [&](int op, u32 width, u32 height, bool inPlace) {
        const FailAllocationsFrom all(0);
        callFlip(stage, kModesOf[op], width, height, inPlace ? other.data() : image.data(), other.data(), 1);
        return FailAllocationsFrom::failures();
    };
    for (int op = 1; op <= 7; ++op) {
        EXPECT_EQ(failures(op, 40, 30, false), 0u) << op;
        if (!turns(op)) {
            EXPECT_EQ(failures(op, 40, 30, true), 0u) << op;
        }
    }
    u32 width = 40, height = 30;
    EXPECT_EQ(callFlip(stage, kModesOf[4], width, height, other.data(), other.data(), 1), 0u);
    EXPECT_EQ(failures(5, 40, 30, true), 0u) << "memory of the size is there";
    EXPECT_EQ(failures(6, 3, 29, true), 0u) << "less is needed";
}

TEST(Flip, MirrorAndRotationModesResolveToOneOperation) {
    CFlip stage;
    std::mt19937 random(5);
    const auto source = noise<u8>(random, 7 * 4);
    for (const u8 highBits : {0x00, 0x10, 0x30, 0xFC}) {
        for (u8 mirror = 0; mirror < 4; ++mirror) {
            for (const u8 rotation : {0, 1, 2, 3, 77, 255}) {
                const int op = operationOf(mirror, rotation);
                std::vector<u8> wanted(source.size()), result(source.size());
                if (op != 0) plainFlip(op, 7, 4, source, wanted, 1);
                u32 width = 7, height = 4;
                const auto modes = static_cast<u8>(mirror | highBits);
                EXPECT_EQ(stage.Flip8(modes, rotation, &width, &height, source.data(), result.data(), 1), 0u);
                EXPECT_EQ(result, wanted) << int{mirror} << ", rotation " << int{rotation};
            }
        }
    }
}

TEST(Flip, TheFourthByteGoesWithAMirrorAndStaysInAQuarterTurn) {
    CFlip stage;
    const std::vector<u8> source = {1, 2, 3, 4, 5, 6, 7, 8};
    std::vector<u8> result(8, 99);
    u32 width = 2, height = 1;
    stage.Flip8(1, 0, &width, &height, source.data(), result.data(), 4);
    EXPECT_EQ(result, (std::vector<u8>{5, 6, 7, 8, 1, 2, 3, 4}));
    result.assign(8, 99);
    stage.Flip8(0, 2, &width, &height, source.data(), result.data(), 4);
    EXPECT_EQ(result, (std::vector<u8>{5, 6, 7, 99, 1, 2, 3, 99}));
    EXPECT_EQ(width, 1u);
    EXPECT_EQ(height, 2u);
    auto inPlace = source;
    width = 2, height = 1;
    stage.Flip8(0, 2, &width, &height, inPlace.data(), inPlace.data(), 4);
    EXPECT_EQ(inPlace, (std::vector<u8>{5, 6, 7, 4, 1, 2, 3, 8}));
}

TEST(Flip, TwoTurnsThatCancelGiveTheImageBack) {
    CFlip stage;
    std::mt19937 random(6);
    const auto source = noise<u8>(random, 64 * 48 * 3);
    const struct {
        Modes first, second;
    } pairs[] = {{{0, 1}, {0, 2}}, {{0, 2}, {0, 1}}, {{3, 0}, {3, 0}}, {{1, 0}, {1, 0}}, {{1, 1}, {1, 1}}};
    for (const auto& pair : pairs) {
        auto image = source;
        u32 width = 64, height = 48;
        stage.Flip8(pair.first.mirror, pair.first.rotation, &width, &height, image.data(), image.data(), 3);
        EXPECT_NE(image, source);
        stage.Flip8(pair.second.mirror, pair.second.rotation, &width, &height, image.data(), image.data(), 3);
        EXPECT_EQ(image, source);
        EXPECT_EQ(width, 64u);
        EXPECT_EQ(height, 48u);
    }
}

// What 2, 3, 4 and 5 become, by operation.
constexpr u16 kArrayAfter[8][4] = {{2, 3, 4, 5}, {3, 2, 5, 4}, {4, 5, 2, 3}, {5, 4, 3, 2},
                                   {3, 5, 2, 4}, {4, 2, 5, 3}, {5, 3, 4, 2}, {2, 4, 3, 5}};

u16 arrayAfter(int op, u16 array) {
    if (array >= 2 && array <= 5) return kArrayAfter[op][array - 2];
    if (turns(op)) return array;
    if (array >= 12 && array <= 15) return kArrayAfter[op][array - 12] + 10;
    if (array >= 16 && array <= 19) return kArrayAfter[op][array - 16] + 14;
    return array;
}

TEST(FlipRaw, TurnsTheSamplesAndTellsTheNewColorArray) {
    CFlip stage;
    std::mt19937 random(7);
    const auto bytes = noise<u8>(random, 22 * 18);
    const auto words = noise<u16>(random, 22 * 18);
    for (int op = 0; op < 8; ++op) {
        const Modes modes = kModesOf[op];
        for (u16 array = 0; array <= 20; ++array) {
            u16 array8 = array, array16 = array;
            u32 width = 22, height = 18;
            auto result8 = bytes, wanted8 = bytes;
            plainFlip(op, 22, 18, bytes, wanted8, 1);
            EXPECT_EQ(stage.FlipRaw8(modes.mirror, modes.rotation, &width, &height, result8.data(),
                                     result8.data(), &array8),
                      0u);
            EXPECT_EQ(result8, wanted8) << op;
            EXPECT_EQ(width, turns(op) ? 18u : 22u);
            width = 22, height = 18;
            auto result16 = words, wanted16 = words;
            plainFlip(op, 22, 18, words, wanted16, 1);
            EXPECT_EQ(stage.FlipRaw16(modes.mirror, modes.rotation, &width, &height, result16.data(),
                                      result16.data(), &array16),
                      0u);
            EXPECT_EQ(result16, wanted16) << op;
            EXPECT_EQ(height, turns(op) ? 22u : 18u);
            EXPECT_EQ(array8, arrayAfter(op, array)) << op << ", array " << array;
            EXPECT_EQ(array16, array8);
        }
    }
}

// The table is what the mosaic itself says: turn one, and look for the colours of the corner.
TEST(FlipRaw, TheNewArrayIsTheOneTheTurnedMosaicHas) {
    static constexpr char kCells[4][5] = {"RGGB", "GRBG", "GBRG", "BGGR"};
    CFlip stage;
    for (int op = 1; op < 8; ++op) {
        for (u16 array = 2; array <= 5; ++array) {
            std::vector<u8> mosaic(6 * 4);
            for (std::size_t y = 0; y < 4; ++y) {
                for (std::size_t x = 0; x < 6; ++x) {
                    mosaic[y * 6 + x] = static_cast<u8>(kCells[array - 2][(y & 1) * 2 + (x & 1)]);
                }
            }
            u32 width = 6, height = 4;
            u16 after = array;
            ASSERT_EQ(stage.FlipRaw8(kModesOf[op].mirror, kModesOf[op].rotation, &width, &height,
                                     mosaic.data(), mosaic.data(), &after),
                      0u);
            const char corner[] = {static_cast<char>(mosaic[0]), static_cast<char>(mosaic[1]),
                                   static_cast<char>(mosaic[width]), static_cast<char>(mosaic[width + 1]), 0};
            EXPECT_STREQ(corner, kCells[after - 2]) << op << ", array " << array;
        }
    }
}

TEST(FlipRaw, AFailureLeavesTheColorArray) {
    CFlip stage;
    std::vector<u8> frame(100 * 100);
    u32 width = 100, height = 100;
    u16 array = 2;
    u32 code = 0;
    {
        const FailAllocationsFrom all(0);
        code = stage.FlipRaw8(0, 1, &width, &height, frame.data(), frame.data(), &array);
    }
    EXPECT_EQ(code, 8u);
    EXPECT_EQ(array, 2);
    EXPECT_EQ(stage.FlipRaw8(1, 0, &width, &height, frame.data(), frame.data(), nullptr), 87u);
    EXPECT_EQ(stage.FlipRaw16(1, 0, &width, &height, nullptr, nullptr, &array), 87u);
    EXPECT_EQ(array, 2);
    EXPECT_EQ(stage.FlipRaw8(0, 0, &width, &height, nullptr, nullptr, nullptr), 0u);
}

TEST(Flip, ComesFromTheFactory) {
    auto* const stage = static_cast<IFlip*>(CreateStageObject(80));
    ASSERT_NE(stage, nullptr);
    u8 row[] = {1, 2, 3};
    u32 width = 3, height = 1;
    EXPECT_EQ(stage->Flip8(1, 0, &width, &height, row, row, 1), 0u);
    EXPECT_EQ(row[0], 3);
    EXPECT_EQ(stage->Release(), 0u);
}

}  // namespace
}  // namespace tavra
