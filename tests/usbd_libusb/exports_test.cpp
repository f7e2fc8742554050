// The whole library as an application loads it, with a real libusb and a camera of umockdev.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "libusb_test.h"
#include "tavra/tavra_api.h"
#include "tavra/tavra_usbd.h"
#include "virtual_brain.h"

namespace tavra::usbd {
namespace {

using test::Bytes;
using test::ControlAnswer;
using test::ControlRequest;
using test::UmockdevDevice;

class Library {
  public:
    Library() : handle_(dlopen(TAVRA_USBD_FILE, RTLD_NOW | RTLD_LOCAL)) {}

    bool loaded() const { return handle_ != nullptr; }

    template <typename Function>
    Function* operator()(Function*, const char* name) const {
        return reinterpret_cast<Function*>(dlsym(handle_, name));
    }

  private:
    void* handle_;
};

// The operation of the loaded library with the type that the header gives it.
#define TAVRA_OPERATION(name) library(static_cast<decltype(::name)*>(nullptr), #name)

// The library stays loaded and keeps its connection to the bus: one bus for all cases, and a number on it for
// each, so that no case can open the camera of the one before.
class ExportsTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { bus_ = std::make_unique<test::UmockdevBus>(); }
    static void TearDownTestSuite() { bus_.reset(); }

    static test::DeviceOptions nextCamera() {
        test::DeviceOptions options;
        options.number = nextNumber_++;
        return options;
    }

    Library library;
    UmockdevDevice camera{*bus_, nextCamera()};

    TavraUsbDevice openFirst() {
        TavraUsbDevice device = 0;
        comesTrue([&] {
            device = TAVRA_OPERATION(UsbOpenByIndex)(0);
            std::uint32_t number = 0;
            if (device != 0) TAVRA_OPERATION(UsbGetFunctionAddress)(device, &number);
            if (device != 0 && number + 1 == nextNumber_) return true;
            if (device != 0) TAVRA_OPERATION(UsbClose)(device);
            device = 0;
            return false;
        });
        return device;
    }
    std::uint32_t lastError() const { return TAVRA_OPERATION(UsbGetLastError)(); }

  private:
    static inline std::unique_ptr<test::UmockdevBus> bus_;
    static inline unsigned nextNumber_ = 5;
};

TEST_F(ExportsTest, AStreamFromOpeningToThePulledCable) {
    ASSERT_TRUE(library.loaded()) << dlerror();
    const TavraUsbDevice device = openFirst();
    ASSERT_NE(device, 0u);
    std::uint32_t count = 0;
    EXPECT_EQ(TAVRA_OPERATION(UsbGetOpenCount)(device, &count), 1);
    EXPECT_EQ(count, 1u);
    std::uint32_t words[2] = {};
    EXPECT_EQ(TAVRA_OPERATION(UsbCheckConfiguration)(device, &words[0], &words[1]), 1);
    EXPECT_EQ(TAVRA_OPERATION(UsbBeginRead)(device), 1);
    EXPECT_EQ(TAVRA_OPERATION(UsbCanResumeRead)(device), 1);

    const auto start = TAVRA_OPERATION(UsbStartRead);
    const auto result = TAVRA_OPERATION(UsbGetReadResult);
    const auto reads = makeReads(4);
    for (const auto& read : reads) {
        EXPECT_EQ(start(device, read->buffer.data(), 4096, &read->record), 0);
        EXPECT_EQ(lastError(), 997u);
    }
    EXPECT_EQ(result(device, &reads[0]->record, &reads[0]->transferred, 0), 0);
    EXPECT_EQ(lastError(), 996u);

    const Bytes frame = pattern(4096 + 1500);
    camera.send(frame);
    EXPECT_TRUE(reads[0]->event.wait(10'000));
    EXPECT_TRUE(reads[1]->event.wait(10'000));
    EXPECT_NE(result(device, &reads[0]->record, &reads[0]->transferred, 0), 0);
    EXPECT_NE(result(device, &reads[1]->record, &reads[1]->transferred, 1), 0);
    Bytes got = reads[0]->data();
    const Bytes rest = reads[1]->data();
    got.insert(got.end(), rest.begin(), rest.end());
    EXPECT_EQ(got, frame);

    camera.unplug();
    EXPECT_TRUE(reads[2]->event.wait(10'000));
    EXPECT_EQ(result(device, &reads[2]->record, &reads[2]->transferred, 0), 0);
    EXPECT_EQ(lastError(), 1167u);
    EXPECT_EQ(start(device, reads[0]->buffer.data(), 4096, &reads[0]->record), 0);
    EXPECT_EQ(lastError(), 1167u);
    EXPECT_EQ(TAVRA_OPERATION(UsbEndRead)(device), 1);
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(device), 1);
    EXPECT_EQ(TAVRA_OPERATION(UsbEndRead)(device), 0);
    EXPECT_EQ(lastError(), 6u) << "the handle is not valid any more";
}

TEST_F(ExportsTest, ThePathOfAnOpeningOpensTheSameCameraAgain) {
    const TavraUsbDevice first = openFirst();
    ASSERT_NE(first, 0u);
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(first), 1);
    TavraWChar path[1024] = {};
    std::uint32_t bytes = sizeof path;
    const TavraUsbDevice second = TAVRA_OPERATION(UsbOpenByIndexPath)(0, path, &bytes);
    ASSERT_NE(second, 0u);
    EXPECT_EQ(std::u16string(path), u"usb:1-1/2e6b:0211");
    const TavraUsbDevice third = TAVRA_OPERATION(UsbOpenByPathW)(path);
    ASSERT_NE(third, 0u);
    std::uint32_t count = 0;
    EXPECT_EQ(TAVRA_OPERATION(UsbGetOpenCount)(third, &count), 1);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(second), 1);
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(third), 1);
}

TEST_F(ExportsTest, MemoryAndI2cGoOverTheWire) {
    const TavraUsbDevice device = openFirst();
    ASSERT_NE(device, 0u);
    std::vector<ControlRequest> seen;
    camera.onControl([&](const ControlRequest& request) {
        seen.push_back(request);
        return ControlAnswer{0, pattern(request.length)};
    });
    Bytes record(256);
    std::uint32_t transferred = 0;
    EXPECT_EQ(TAVRA_OPERATION(UsbReadMemory)(device, 256, 511, record.data(), &transferred), 1);
    EXPECT_EQ(transferred, 256u);
    EXPECT_EQ(record, pattern(256));
    std::uint8_t byte = 0x5A;
    EXPECT_EQ(TAVRA_OPERATION(UsbWriteI2CByte)(device, 1, 0x48, 0x12, 1, &byte, &transferred), 1);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].requestType, 0xC0);
    EXPECT_EQ(seen[0].request, 0xE0);
    EXPECT_EQ(seen[0].value, 256);
    EXPECT_EQ(seen[0].index, 0);
    EXPECT_EQ(seen[1].requestType, 0x40);
    EXPECT_EQ(seen[1].request, 0xE2);
    EXPECT_EQ(seen[1].value, 0x12);
    EXPECT_EQ(seen[1].index, 0x148);
    EXPECT_EQ(seen[1].data, Bytes{0x5A});
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(device), 1);
}

TEST_F(ExportsTest, ClosingWithReadsInFlightEndsThem) {
    const TavraUsbDevice device = openFirst();
    ASSERT_NE(device, 0u);
    const auto reads = makeReads(8);
    for (const auto& read : reads) {
        TAVRA_OPERATION(UsbStartRead)(device, read->buffer.data(), 4096, &read->record);
        EXPECT_EQ(lastError(), 997u);
    }
    EXPECT_EQ(TAVRA_OPERATION(UsbClose)(device), 1);
    for (const auto& read : reads) EXPECT_TRUE(read->signalled());
    EXPECT_EQ(camera.counts().readsInFlight, 0u);
}

TEST_F(ExportsTest, TheCameraLibraryOpensACameraAndNoticesThePulledCable) {
    const std::unique_ptr<Device> brain = makeBrain("bayer:width=320:height=240");
    ASSERT_NE(brain, nullptr);
    camera.onControl([&](const ControlRequest& request) { return askBrain(*brain, request); });
    setenv("TAVRA_USBD", TAVRA_USBD_FILE, 1);
    void* handle = nullptr;
    EXPECT_TRUE(comesTrue([&] { return (handle = Tavra_Open(0)) != nullptr; }))
        << std::hex << Tavra_GetLastError(nullptr);
    ASSERT_NE(handle, nullptr);
    std::uint16_t vendor = 0;
    std::uint16_t type = 0;
    std::uint16_t hardware = 0;
    std::uint16_t firmware = 0;
    EXPECT_TRUE(Tavra_GetCameraVersion(handle, &vendor, &type, &hardware, &firmware));
    EXPECT_EQ(vendor, 0x2E6B);
    Bytes identity(64);
    std::uint32_t length = 0;
    EXPECT_EQ(brain->controlTransfer({0xC0, 17, 0, 0}, identity, length), 0u);
    EXPECT_EQ(type, identity[4] | identity[5] << 8);
    camera.unplug();
    std::uint16_t word = 0;
    EXPECT_FALSE(Tavra_GetFPGAStatus(handle, 102, 1, &word));
    EXPECT_EQ(Tavra_GetLastError(handle), 0xE0000005u);
    Tavra_Close(handle);
    camera.onControl({});
}

}  // namespace
}  // namespace tavra::usbd
