#include "stages/factory.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"

namespace tavra {
namespace {

TEST(StageFactory, ColorInterpolationArrivesWithCountOne) {
    ISUnknown* const object = CreateStageObject(64);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object->Release(), 0u);
}

TEST(StageFactory, EachCodeMakesItsClass) {
    auto* const gamma = static_cast<IGamma*>(CreateStageObject(32));
    auto* const matrix = static_cast<IColorMatrix*>(CreateStageObject(48));
    auto* const chroma = static_cast<IChromaSuppress*>(CreateStageObject(49));
    std::uint16_t value = 0;
    EXPECT_EQ(gamma->GetGamma(0, nullptr, &value, nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(value, 100);
    EXPECT_EQ(matrix->GetHueSaturation(nullptr, nullptr, &value), 0u);
    EXPECT_EQ(value, 100);
    EXPECT_EQ(chroma->GetHighThreshold(&value), 0u);
    EXPECT_EQ(value, 255);
    EXPECT_EQ(gamma->Release(), 0u);
    EXPECT_EQ(matrix->Release(), 0u);
    EXPECT_EQ(chroma->Release(), 0u);
}

TEST(StageFactory, ObjectsHaveCountsOfTheirOwn) {
    ISUnknown* const first = CreateStageObject(64);
    ISUnknown* const second = CreateStageObject(64);
    ASSERT_NE(first, second);
    first->AddRef();
    EXPECT_EQ(second->AddRef(), 2u);
    EXPECT_EQ(first->AddRef(), 3u);
    for (int i = 0; i < 3; ++i) first->Release();
    for (int i = 0; i < 2; ++i) second->Release();
}

TEST(StageFactory, CodesOutsideTheTableGiveNull) {
    for (std::int32_t code : {50, 177, 15, 0, -64, 63, 65, 112, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(CreateStageObject(code), nullptr) << code;
    }
}

TEST(StageFactory, TheObjectIsTheStage) {
    auto* const stage = static_cast<IColorInterpolation*>(CreateStageObject(64));
    const std::uint8_t sample = 7;
    std::uint8_t pixel[4] = {1, 1, 1, 1};
    EXPECT_EQ(stage->Convert(1, 1, &sample, pixel, 0, 1, 3), 0u);
    EXPECT_EQ(pixel[2], 7);
    EXPECT_EQ(stage->Release(), 0u);
}

TEST(StageCount, AnObjectWithCountTwoStaysUsableAfterARelease) {
    auto* const stage = static_cast<IColorInterpolation*>(CreateStageObject(64));
    stage->AddRef();
    EXPECT_EQ(stage->Release(), 1u);
    const std::uint8_t sample = 9;
    std::uint8_t pixel = 0;
    EXPECT_EQ(stage->Convert(1, 1, &sample, &pixel, 0, 1, 1), 0u);
    EXPECT_EQ(pixel, 9);
    EXPECT_EQ(stage->Release(), 0u);
}

class Counted final : public CountedStage<Counted, ISUnknown> {
  public:
    explicit Counted(int* destroyed) : destroyed_(destroyed) {}
    ~Counted() { ++*destroyed_; }

  private:
    int* destroyed_;
};

TEST(StageCount, StartsAtZeroAndTheLastReleaseDestroys) {
    int destroyed = 0;
    auto* const object = new Counted(&destroyed);
    EXPECT_EQ(object->AddRef(), 1u);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(destroyed, 1);
}

TEST(StageCount, CountsFromManyThreads) {
    int destroyed = 0;
    auto* const object = new Counted(&destroyed);
    object->AddRef();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([object] {
            for (int i = 0; i < 10000; ++i) object->AddRef();
            for (int i = 0; i < 10000; ++i) object->Release();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
}  // namespace tavra
