#include <gmock/gmock.h>

#include <cerrno>
#include <thread>

#include "libusb/control_transfer.h"
#include "libusb/event_thread.h"
#include "libusb_test.h"

namespace tavra::usbd {
namespace {

using test::Bytes;
using test::ControlAnswer;
using test::ControlRequest;
using testing::ElementsAre;

constexpr ControlSetup kIn{0xC0, 17, 0x1234, 0x5678};
constexpr ControlSetup kOut{0x40, 33, 1, 2};

TEST_F(OpenCameraTest, ARequestToTheHostArrivesWithItsFieldsAndBringsTheAnswer) {
    ControlRequest seen{};
    camera.onControl([&](const ControlRequest& request) {
        seen = request;
        return ControlAnswer{0, pattern(64)};
    });
    Bytes data(64);
    std::uint32_t transferred = 0;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 0u);
    EXPECT_EQ(transferred, 64u);
    EXPECT_EQ(data, pattern(64));
    EXPECT_EQ(seen.requestType, 0xC0);
    EXPECT_EQ(seen.request, 17);
    EXPECT_EQ(seen.value, 0x1234);
    EXPECT_EQ(seen.index, 0x5678);
    EXPECT_EQ(seen.length, 64);
}

TEST_F(OpenCameraTest, ARequestToTheDeviceCarriesItsData) {
    ControlRequest seen{};
    camera.onControl([&](const ControlRequest& request) {
        seen = request;
        return ControlAnswer{};
    });
    Bytes data = pattern(4096);
    std::uint32_t transferred = 0;
    EXPECT_EQ(device->controlTransfer(kOut, data, transferred), 0u);
    EXPECT_EQ(transferred, 4096u);
    EXPECT_EQ(seen.data, pattern(4096));
}

TEST_F(OpenCameraTest, ARequestWithoutDataWorks) {
    unsigned length = 1;
    camera.onControl([&](const ControlRequest& request) {
        length = request.length;
        return ControlAnswer{};
    });
    std::uint32_t transferred = 9;
    EXPECT_EQ(device->controlTransfer({0x40, 48, 0, 0}, {}, transferred), 0u);
    EXPECT_EQ(transferred, 0u);
    EXPECT_EQ(length, 0u);
}

TEST_F(OpenCameraTest, AShortAnswerIsASuccessWithItsLengthAndLeavesTheRestAlone) {
    camera.onControl([](const ControlRequest&) { return ControlAnswer{0, {1, 2, 3}}; });
    Bytes data(5, 0xEE);
    std::uint32_t transferred = 0;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 0u);
    EXPECT_EQ(transferred, 3u);
    EXPECT_THAT(data, ElementsAre(1, 2, 3, 0xEE, 0xEE));
}

TEST_F(OpenCameraTest, ARefusedRequestGives22AndTheNextOneWorks) {
    camera.onControl([](const ControlRequest& request) {
        return request.request == 17 ? ControlAnswer{-EPIPE, {}} : ControlAnswer{};
    });
    Bytes data(64);
    std::uint32_t transferred = 9;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 22u);
    EXPECT_EQ(transferred, 0u);
    EXPECT_EQ(device->controlTransfer(kOut, data, transferred), 0u);
}

TEST_F(OpenCameraTest, ADamagedAnswerGives23) {
    camera.onControl([](const ControlRequest&) { return ControlAnswer{-EPROTO, {}}; });
    Bytes data(64);
    std::uint32_t transferred = 0;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 23u);
}

TEST_F(OpenCameraTest, MoreThanAPageOfDataIsRefusedWithoutATransfer) {
    Bytes data(4097);
    std::uint32_t transferred = 9;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 87u);
    EXPECT_EQ(transferred, 0u);
    EXPECT_EQ(camera.counts().controls, 0u);
}

TEST_F(OpenCameraTest, ARequestOnADeviceThatIsGoneGives1167) {
    camera.unplug();
    Bytes data(64);
    std::uint32_t transferred = 0;
    EXPECT_EQ(device->controlTransfer(kIn, data, transferred), 1167u);
}

TEST_F(OpenCameraTest, ARequestUnderWayEndsWhenTheCableIsPulled) {
    camera.ignoreControl(true);
    ErrorCode result = 0;
    std::thread caller([&] {
        Bytes data(64);
        std::uint32_t transferred = 0;
        result = device->controlTransfer(kIn, data, transferred);
    });
    EXPECT_TRUE(camera.waitUntil([](const auto& counts) { return counts.controls == 1; }));
    camera.unplug();
    caller.join();
    EXPECT_EQ(result, 1167u);
}

TEST_F(OpenCameraTest, RequestsOfManyThreadsGetTheirOwnAnswers) {
    camera.onControl([](const ControlRequest& request) {
        return ControlAnswer{0, pattern(request.length, request.value)};
    });
    std::vector<std::thread> threads;
    std::atomic<unsigned> right{0};
    for (unsigned t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (unsigned i = 0; i < 50; ++i) {
                const auto value = static_cast<std::uint16_t>(t * 50 + i);
                Bytes data(16 + t);
                std::uint32_t transferred = 0;
                const ErrorCode code = device->controlTransfer({0xC0, 128, value, 0}, data, transferred);
                right += code == 0 && data == pattern(16 + t, value) ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 400u);
}

// The layer below, for its time-out.
TEST_F(LibusbTest, ADeviceThatDoesNotAnswerInTimeGives121) {
    test::UmockdevDevice camera(bus, {});
    ASSERT_TRUE(seesCameras(1));
    camera.ignoreControl(true);
    libusb_context* context = nullptr;
    ASSERT_EQ(libusb_init(&context), 0);
    EventThread events(context);
    ASSERT_EQ(events.acquire(), 0u);
    libusb_device_handle* const handle = libusb_open_device_with_vid_pid(context, 0x2E6B, 0x0211);
    ASSERT_NE(handle, nullptr);
    Bytes data(64);
    std::uint32_t transferred = 9;
    EXPECT_EQ(transferControl(handle, kIn, data, transferred, 20), 121u);
    EXPECT_EQ(transferred, 0u);
    libusb_close(handle);
    events.release();
    libusb_exit(context);
}

}  // namespace
}  // namespace tavra::usbd
