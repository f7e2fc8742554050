// Memories, I2C and firmware over the wire, against a device side written from docs/wire-protocol.md.
#include <gmock/gmock.h>

#include <cerrno>
#include <map>

#include "libusb_test.h"
#include "operations.h"

namespace tavra::usbd {
namespace {

using test::Bytes;
using test::ControlAnswer;
using test::ControlRequest;
using testing::ElementsAre;

// The device side: a memory of 8 KiB in each of three spaces, one I2C device, a processor that takes
// firmware.
class WireCamera {
  public:
    ControlAnswer answer(const ControlRequest& request) {
        ++requests;
        const bool toHost = request.requestType == 0xC0;
        if (!toHost && request.requestType != 0x40) return {-EPIPE, {}};
        switch (request.request) {
            case 0xE0: return access(memory[request.index >> 12], address(request), request, toHost);
            case 0xE1:
            case 0xE2:
                if (request.index != (2 << 8 | 0x36)) return {-EPIPE, {}};
                return access(i2c, request.value, request, toHost);
            case 0xE3:
                if (request.value == 1) firmwareTaken = 0;
                held = request.value == 1;
                return {};
            case 0xE4:
                firmwareTaken += request.length;
                return access(firmware, request.value | request.index << 16, request, toHost);
            case 0xE5:
                return {0,
                        {static_cast<std::uint8_t>(firmwareTaken),
                         static_cast<std::uint8_t>(firmwareTaken >> 8), 0, 0}};
            default: return {-EPIPE, {}};
        }
    }

    std::map<unsigned, Bytes> memory;
    Bytes i2c = Bytes(65536);
    Bytes firmware = Bytes(65536);
    unsigned firmwareTaken = 0;
    unsigned requests = 0;
    unsigned longest = 0;
    bool held = false;

  private:
    static std::size_t address(const ControlRequest& request) {
        return request.value | (request.index & 0x0FFFu) << 16;
    }

    ControlAnswer access(Bytes& space, std::size_t at, const ControlRequest& request, bool toHost) {
        longest = std::max<unsigned>(longest, request.length);
        if (space.empty()) space.resize(8192);
        if (at + request.length > space.size()) return {-EPIPE, {}};
        const auto begin = space.begin() + static_cast<std::ptrdiff_t>(at);
        if (toHost) return {0, Bytes(begin, begin + request.length)};
        std::copy(request.data.begin(), request.data.end(), begin);
        return {};
    }
};

class WireTest : public OpenCameraTest {
  protected:
    WireCamera wire;

    void SetUp() override {
        OpenCameraTest::SetUp();
        camera.onControl([this](const ControlRequest& request) { return wire.answer(request); });
    }
    void TearDown() override { camera.onControl({}); }
};

TEST_F(WireTest, MemoryIsWrittenAndReadInPiecesOfAPage) {
    const Bytes content = pattern(6000);
    std::uint32_t transferred = 0;
    EXPECT_EQ(writeMemory(*device, wire::MemorySpace::NonVolatile, 512, 6511, content.data(), transferred),
              0u);
    EXPECT_EQ(transferred, 6000u);
    EXPECT_EQ(wire.requests, 2u);
    EXPECT_EQ(wire.longest, 4096u);
    Bytes back(6000);
    EXPECT_EQ(readMemory(*device, wire::MemorySpace::NonVolatile, 512, 6511, back.data(), transferred), 0u);
    EXPECT_EQ(back, content);
    EXPECT_EQ(wire.memory[0][511], 0);
    EXPECT_EQ(wire.memory[0][512], content[0]);
    EXPECT_EQ(wire.memory[0][6511], content[5999]);
}

TEST_F(WireTest, TheSpacesOfMemoryAreApart) {
    const std::uint8_t content[2] = {0xAB, 0xCD};
    std::uint32_t transferred = 0;
    EXPECT_EQ(writeMemory(*device, wire::MemorySpace::Setup, 14, 15, content, transferred), 0u);
    EXPECT_EQ(transferred, 2u);
    EXPECT_EQ(wire.memory[1][14], 0xAB);
    EXPECT_EQ(wire.memory[1][15], 0xCD);
    EXPECT_TRUE(wire.memory[0].empty());
    EXPECT_TRUE(wire.memory[2].empty());
}

TEST_F(WireTest, AMemoryRequestThatTheDeviceRefusesFails) {
    Bytes back(100);
    std::uint32_t transferred = 9;
    EXPECT_EQ(readMemory(*device, wire::MemorySpace::NonVolatile, 8150, 8249, back.data(), transferred), 22u);
    EXPECT_EQ(transferred, 0u);
}

TEST_F(WireTest, I2cGoesToTheBusAndDeviceAsked) {
    const std::uint8_t content[3] = {7, 8, 9};
    std::uint32_t transferred = 0;
    EXPECT_EQ(writeI2c(*device, {wire::kI2c16BitRegister, 2, 0x36, 0x3500}, 3, content, transferred), 0u);
    EXPECT_EQ(wire.i2c[0x3500], 7);
    EXPECT_EQ(wire.i2c[0x3502], 9);
    std::uint8_t back[3] = {};
    EXPECT_EQ(readI2c(*device, {wire::kI2c16BitRegister, 2, 0x36, 0x3500}, 3, back, transferred), 0u);
    EXPECT_THAT(back, ElementsAre(7, 8, 9));
    EXPECT_EQ(transferred, 3u);
}

TEST_F(WireTest, AnI2cDeviceThatIsNotThereRefuses) {
    std::uint8_t back[1] = {};
    std::uint32_t transferred = 0;
    EXPECT_EQ(readI2c(*device, {wire::kI2c8BitRegister, 2, 0x37, 0}, 1, back, transferred), 22u);
}

TEST_F(WireTest, FirmwareArrivesWhereTheMaskSaysAndTheProcessorRuns) {
    Bytes image = pattern(16384);
    Bytes mask(16384, 0);
    std::fill(mask.begin() + 100, mask.begin() + 5100, 1);
    std::fill(mask.begin() + 16000, mask.end(), 1);
    std::uint32_t taken = 0;
    EXPECT_EQ(downloadFirmware(*device, image, mask.data(), taken), 0u);
    EXPECT_EQ(taken, 5384u);
    EXPECT_FALSE(wire.held);
    EXPECT_EQ(wire.firmware[99], 0);
    EXPECT_EQ(Bytes(wire.firmware.begin() + 100, wire.firmware.begin() + 5100),
              Bytes(image.begin() + 100, image.begin() + 5100));
    EXPECT_EQ(wire.firmware[5100], 0);
    EXPECT_EQ(wire.firmware[16383], image[16383]);
}

TEST_F(WireTest, PullingTheCableInTheMiddleOfAMemoryReadEndsItWith1167) {
    std::unique_ptr<std::thread> puller;
    camera.onControl([&](const ControlRequest& request) {
        // The pull needs the model's lock, which this answer holds: it takes effect before the next request
        // or after.
        if (!puller) puller = std::make_unique<std::thread>([this] { camera.unplug(); });
        return wire.answer(request);
    });
    Bytes back(8192);
    std::uint32_t transferred = 0;
    ErrorCode code = 0;
    for (unsigned i = 0; code == 0 && i < 100'000; ++i) {
        code = readMemory(*device, wire::MemorySpace::NonVolatile, 0, 8191, back.data(), transferred);
    }
    EXPECT_EQ(code, 1167u);
    ASSERT_NE(puller, nullptr);
    puller->join();
}

}  // namespace
}  // namespace tavra::usbd
