#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using testing::Each;

using Lines = std::array<std::uint16_t, 3>;

class ControlArea : public CameraTest {
  protected:
    void expectLines(const Lines& columns, const Lines& rows) {
        Lines x{};
        Lines y{};
        expectSuccess(Tavra_GetControlArea(handle, x.data(), y.data()));
        EXPECT_EQ(x, columns);
        EXPECT_EQ(y, rows);
    }
};

TEST_F(ControlArea, IsStoredAsGivenWithoutTheCamera) {
    for (const DoubleCamera& camera : {DoubleCamera(), legacyCamera()}) {
        usb.reset();
        open(camera);
        expectLines({2500, 5000, 7500}, {2500, 5000, 7500});
        const Lines x{65535, 0, 10001};
        const Lines y{3, 2, 1};
        expectSuccess(Tavra_SetControlArea(handle, x.data(), y.data()));
        expectLines(x, y);
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(ControlArea, IsThatOfTheStatistics) {
    open();
    const Lines whole{10000, 10000, 10000};
    expectSuccess(Tavra_SetControlArea(handle, whole.data(), whole.data()));
    const Bytes frame{7, 7, 7, 7};
    record().statistics.Accumulate(2, 2, 2, frame.data());
    CAveragePixelValue::Means means{};
    record().statistics.GetWeightedAverage({1}, means);
    EXPECT_THAT(means, Each(7));
}

TEST_F(ControlArea, MissingArraysAreBadArguments) {
    open();
    Lines lines{1, 2, 3};
    expectFailure(Tavra_SetControlArea(handle, nullptr, lines.data()), 87);
    expectFailure(Tavra_SetControlArea(handle, lines.data(), nullptr), 87);
    expectFailure(Tavra_GetControlArea(handle, nullptr, lines.data()), 87);
    expectFailure(Tavra_GetControlArea(handle, lines.data(), nullptr), 87);
    EXPECT_THAT(lines, ElementsAre(1, 2, 3));
    expectLines({2500, 5000, 7500}, {2500, 5000, 7500});
}

TEST_F(ControlArea, NeedsAHandle) {
    Lines lines{1, 2, 3};
    EXPECT_EQ(Tavra_SetControlArea(nullptr, lines.data(), lines.data()), 0);
    EXPECT_EQ(Tavra_GetControlArea(nullptr, lines.data(), lines.data()), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    EXPECT_THAT(lines, ElementsAre(1, 2, 3));
}

}  // namespace
}  // namespace tavra::test
