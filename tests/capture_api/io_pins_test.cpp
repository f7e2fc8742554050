// I/O pins, switches and LEDs.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

using Get = TavraBool (*)(TavraHandle, std::uint32_t*);
using Set = TavraBool (*)(TavraHandle, std::uint16_t);

TEST_F(TriggerTest, DirectionPolarityAndStatusAreWords0To2) {
    openWordCamera(0);
    const struct {
        Get get;
        Set set;
        std::uint16_t address;
    } rows[] = {{Tavra_GetIOPinDirection, Tavra_SetIOPinDirection, 0},
                {Tavra_GetIOPinPolarity, Tavra_SetIOPinPolarity, 1},
                {Tavra_GetIOPinStatus, Tavra_SetIOPinStatus, 2}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.set(handle, 0xABCD), 1);
        EXPECT_EQ(traffic(),
                  (Traffic{writeStatus(static_cast<std::uint16_t>(0x8000 + row.address), {0xCD, 0xAB})}));
        std::uint32_t value = 0xFFFFFFFF;
        EXPECT_EQ(row.get(handle, &value), 1);
        EXPECT_EQ(value, 0xABCDu) << "the upper half is cleared";
        EXPECT_EQ(traffic(), (Traffic{readStatus(row.address, 1)}));
    }
}

TEST_F(TriggerTest, PinModesAreWords4To7) {
    openWordCamera(0);
    for (std::uint16_t pin = 0; pin < 4; ++pin) {
        EXPECT_EQ(Tavra_SetIOPinMode(handle, pin, 9), 1);
        EXPECT_EQ(traffic(), (Traffic{writeStatus(static_cast<std::uint16_t>(0x8004 + pin), {9, 0})}));
        std::uint32_t mode = 0xFFFFFFFF;
        EXPECT_EQ(Tavra_GetIOPinMode(handle, pin, &mode), 1);
        EXPECT_EQ(mode, 9u);
        EXPECT_EQ(traffic(), (Traffic{readStatus(static_cast<std::uint16_t>(4 + pin), 1)}));
    }
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetIOPinMode(handle, 4, &mode), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(Tavra_SetIOPinMode(handle, 4, 1), 0);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, SwitchesAreWord102) {
    openWordCamera(0);
    usb.camera().status(102) = 0x8001;
    std::uint32_t status = 0xFFFFFFFF;
    EXPECT_EQ(Tavra_GetSwStatus(handle, &status), 1);
    EXPECT_EQ(status, 0x8001u);
}

TEST_F(TriggerTest, AFailedReadLeavesZero) {
    openWordCamera(0);
    usb.failRequest(128);
    std::uint32_t value = 77;
    EXPECT_EQ(Tavra_GetIOPinStatus(handle, &value), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(lastError(), 0xE0000005u);
}

TEST_F(TriggerTest, LegacyCamerasHaveNoPins) {
    usb.addCamera().setIdentity16(4, 2053);
    open();
    std::uint32_t value = 77;
    EXPECT_EQ(Tavra_GetIOExistence(handle, &value), 1);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(Tavra_GetIOPinStatus(handle, &value), 0);
    EXPECT_EQ(lastError(), 0xE0000021u);
    EXPECT_EQ(Tavra_SetIOPinDirection(handle, 1), 0);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, ExistenceIsWord6OrAllFourPins) {
    DoubleCamera& camera = usb.addCamera();
    camera.setCapabilityWord(6, 0x1234);
    open();
    std::uint32_t mask = 0;
    EXPECT_EQ(Tavra_GetIOExistence(handle, &mask), 1);
    EXPECT_EQ(mask, 15u);
    Tavra_Close(handle);
    camera.setCapability(4, 2);
    open();
    EXPECT_EQ(Tavra_GetIOExistence(handle, &mask), 1);
    EXPECT_EQ(mask, 0x1234u);
}

TEST_F(TriggerTest, LedsFollowFromFiveCapabilities) {
    const struct {
        bool word0bit5;
        std::uint16_t word4top;
        std::uint32_t answer;
    } rows[] = {{false, 0x0, 0}, {true, 0x0, 3},  {false, 0x1, 1},
                {true, 0x1, 0},  {false, 0x2, 0}, {false, 0xF, 0}};
    for (const auto& row : rows) {
        usb.reset();
        DoubleCamera& camera = usb.addCamera();
        camera.setCapability(0, 5, row.word0bit5);
        camera.setCapabilityWord(4, static_cast<std::uint16_t>(row.word4top << 12));
        open();
        std::uint32_t mask = 77;
        EXPECT_EQ(Tavra_GetLEDExistence(handle, &mask), 1);
        EXPECT_EQ(mask, row.answer) << row.word0bit5 << ' ' << row.word4top;
        Tavra_Close(handle);
        handle = nullptr;
    }
}

}  // namespace
}  // namespace tavra::test
