#include "platform/usb_access.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "platform/event.h"
#include "platform/last_error.h"

namespace tavra::platform {
namespace {

// Each case runs in a process of its own under ctest; a library once loaded stays. The libraries are
// usbd_double.cpp with one .def file or another, in folders beside the program.

void searchIn(const std::wstring& folder) {
    std::array<wchar_t, 1024> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring program = path.data();
    SetDllDirectoryW((program.substr(0, program.rfind(L'\\') + 1) + L"usbd_doubles\\" + folder).c_str());
}

const UsbAccess* loadFrom(const std::wstring& folder) {
    searchIn(folder);
    const UsbAccess* access = nullptr;
    EXPECT_TRUE(loadUsbAccess(access).ok());
    return access;
}

TEST(UsbAccess, AMissingLibraryIsReportedAndTheNextCallTriesAgain) {
    searchIn(L"nowhere");
    const UsbAccess* access = nullptr;
    EXPECT_EQ(loadUsbAccess(access).code(), 126u);
    EXPECT_EQ(lastSystemError(), 126u);
    EXPECT_EQ(access, nullptr);
    searchIn(L"ordinals");
    EXPECT_TRUE(loadUsbAccess(access).ok());
    EXPECT_NE(access, nullptr);
}

TEST(UsbAccess, ALibraryWithoutAnOperationIsRefused) {
    searchIn(L"incomplete");
    const UsbAccess* access = nullptr;
    EXPECT_EQ(loadUsbAccess(access).code(), 127u);
    EXPECT_EQ(lastSystemError(), 127u);
    EXPECT_EQ(access, nullptr);
    EXPECT_EQ(GetModuleHandleW(L"TavraUSBD.dll"), nullptr) << "it is unloaded again";
}

void expectNumbers(const UsbAccess& a) {
    EXPECT_EQ(a.openByIndex(0), 1u);
    EXPECT_EQ(a.close(0), 2);
    EXPECT_EQ(a.getDriverVersion(0, nullptr, nullptr, nullptr, nullptr), 3);
    EXPECT_EQ(a.getLibraryVersion(nullptr, nullptr, nullptr, nullptr), 4);
    EXPECT_EQ(a.getConfigDescriptor(0, nullptr, 0, nullptr), 9);
    EXPECT_EQ(a.getFunctionAddress(0, nullptr), 10);
    EXPECT_EQ(a.getOpenCount(0, nullptr), 11);
    EXPECT_EQ(a.controlTransfer(0, 0, 0, 0, 0, 0, nullptr, nullptr), 13);
    EXPECT_EQ(a.readI2CWord(0, 0, 0, 0, 0, nullptr, nullptr), 15);
    EXPECT_EQ(a.writeI2CWord(0, 0, 0, 0, 0, nullptr, nullptr), 16);
    EXPECT_EQ(a.readI2CByte(0, 0, 0, 0, 0, nullptr, nullptr), 17);
    EXPECT_EQ(a.writeI2CByte(0, 0, 0, 0, 0, nullptr, nullptr), 18);
    EXPECT_EQ(a.downloadFirmware(0, nullptr, nullptr, 0, nullptr), 21);
    EXPECT_EQ(a.parseHexImage(nullptr, 0, nullptr, nullptr, 0, nullptr), 26);
    EXPECT_EQ(a.endRead(0), 34);
    EXPECT_EQ(a.beginRead(0), 35);
    EXPECT_EQ(a.canResumeRead(0), 36);
    EXPECT_EQ(a.checkConfiguration(0, nullptr, nullptr), 42);
    EXPECT_EQ(a.readMemory(0, 0, 0, nullptr, nullptr), 43);
    EXPECT_EQ(a.writeMemory(0, 0, 0, nullptr, nullptr), 44);
    EXPECT_EQ(a.readSetupMemory(0, 0, 0, nullptr, nullptr), 45);
    EXPECT_EQ(a.writeSetupMemory(0, 0, 0, nullptr, nullptr), 46);
    EXPECT_EQ(a.openByPathW(nullptr), 47u);
    EXPECT_EQ(a.openByPathA(nullptr), 48u);
    EXPECT_EQ(a.openByIndexPath(0, nullptr, nullptr), 49u);
}

void expectOptionalNumbers(const UsbAccess& a) {
    ASSERT_TRUE(a.readControllerMemory && a.writeControllerMemory && a.parseSecondImage);
    EXPECT_EQ(a.readControllerMemory(0, 0, 0, nullptr, nullptr), 19);
    EXPECT_EQ(a.writeControllerMemory(0, 0, 0, nullptr, nullptr), 20);
    EXPECT_EQ(a.parseSecondImage(nullptr, nullptr, 0, nullptr, 0, nullptr), 27);
}

TEST(UsbAccess, AClosedLibraryIsUsedByOrdinal) {
    const UsbAccess* a = loadFrom(L"ordinals");
    ASSERT_NE(a, nullptr);
    expectNumbers(*a);
    expectOptionalNumbers(*a);
    EXPECT_EQ(a->allocReadMemory, nullptr);
    EXPECT_EQ(a->freeReadMemory, nullptr);
    setLastSystemError(31);
    EXPECT_EQ(a->getLastError(), 31u) << "the system's last error stands in";
}

TEST(UsbAccess, OperationsWithoutANumberAreUsedByName) {
    const UsbAccess* a = loadFrom(L"names");
    ASSERT_NE(a, nullptr);
    expectNumbers(*a);
    expectOptionalNumbers(*a);
    EXPECT_EQ(a->getLastError(), 1001u);
    EXPECT_EQ(a->startRead(0, nullptr, 0, nullptr), 1002);
    EXPECT_EQ(a->getReadResult(0, nullptr, nullptr, 0), 1003);
    EXPECT_EQ(a->deviceControl(0, 0), 1004);
    ASSERT_TRUE(a->allocReadMemory && a->freeReadMemory);
    EXPECT_EQ(a->allocReadMemory(0, 1), reinterpret_cast<void*>(std::uintptr_t{1005}));
}

TEST(UsbAccess, HalfOfAPairIsNotUsed) {
    const UsbAccess* a = loadFrom(L"halves");
    ASSERT_NE(a, nullptr);
    expectNumbers(*a);
    EXPECT_EQ(a->readControllerMemory, nullptr);
    EXPECT_EQ(a->writeControllerMemory, nullptr);
    EXPECT_EQ(a->parseSecondImage, nullptr);
    EXPECT_EQ(a->allocReadMemory, nullptr);
    EXPECT_EQ(a->freeReadMemory, nullptr);
    TavraUsbRead read{};
    std::uint8_t byte = 0;
    EXPECT_EQ(a->startRead(static_cast<TavraUsbDevice>(-1), &byte, 1, &read), 0)
        << "the library's own reads start with 1002";
}

// The reads of a closed library, on a pipe in the place of a camera.
struct FileReads : testing::Test {
    const UsbAccess* access = loadFrom(L"ordinals");
    HANDLE camera = nullptr;
    HANDLE host = nullptr;
    Event event{Event::Reset::Manual, true};
    TavraUsbRead read{0, 0, 0, event.native()};
    std::array<std::uint8_t, 16> buffer{};
    std::uint32_t transferred = 99;

    void SetUp() override {
        ASSERT_NE(access, nullptr);
        const std::wstring name = L"\\\\.\\pipe\\tavra-test-" + std::to_wstring(GetCurrentProcessId());
        camera = CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_BYTE, 1,
                                  4096, 4096, 0, nullptr);
        host = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                           FILE_FLAG_OVERLAPPED, nullptr);
        ASSERT_NE(camera, INVALID_HANDLE_VALUE);
        ASSERT_NE(host, INVALID_HANDLE_VALUE);
    }
    void TearDown() override {
        CloseHandle(host);
        if (camera != nullptr) CloseHandle(camera);
    }
    TavraUsbDevice device() const { return reinterpret_cast<TavraUsbDevice>(host); }
    void send(const std::string& bytes) const {
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(camera, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    }
    std::uint32_t start() {
        EXPECT_EQ(access->startRead(device(), buffer.data(), buffer.size(), &read), 0);
        return access->getLastError();
    }
};

TEST_F(FileReads, AReadIsInFlightUntilTheDeviceAnswers) {
    EXPECT_EQ(start(), 997u);
    EXPECT_FALSE(event.wait(0)) << "starting a read resets its event";
    EXPECT_EQ(access->getReadResult(device(), &read, &transferred, 0), 0);
    EXPECT_EQ(access->getLastError(), 996u);
    send("frame");
    EXPECT_TRUE(event.wait(kWaitForever));
    EXPECT_NE(access->getReadResult(device(), &read, &transferred, 1), 0);
    EXPECT_EQ(transferred, 5u);
    EXPECT_EQ(std::string(buffer.begin(), buffer.begin() + 5), "frame");
}

TEST_F(FileReads, AReadThatCompletesAtOnceIsToldAsInFlightWithItsEventSet) {
    send("early");
    EXPECT_EQ(start(), 997u);
    EXPECT_TRUE(event.wait(0));
    EXPECT_NE(access->getReadResult(device(), &read, &transferred, 0), 0);
    EXPECT_EQ(transferred, 5u);
}

TEST_F(FileReads, ACancelledReadGives995) {
    EXPECT_EQ(start(), 997u);
    ASSERT_TRUE(CancelIoEx(host, nullptr));
    EXPECT_EQ(access->getReadResult(device(), &read, &transferred, 1), 0);
    EXPECT_EQ(access->getLastError(), 995u);
    EXPECT_EQ(transferred, 0u);
}

TEST_F(FileReads, AReadOnADeviceThatIsGoneIsNotQueued) {
    CloseHandle(camera);
    camera = nullptr;
    const std::uint32_t reason = start();
    EXPECT_NE(reason, 997u);
    EXPECT_NE(reason, 0u);
}

TEST_F(FileReads, ADeviceControlThatTheDriverDoesNotKnowFails) {
    EXPECT_EQ(access->deviceControl(device(), 0x222140), 0);
    EXPECT_NE(access->getLastError(), 0u);
    EXPECT_NE(access->getLastError(), 997u);
}

TEST(FileControl, ADeviceControlIsDoneWhenItReturns) {
    constexpr std::uint32_t kSetSparse =
        0x900C4;  // takes no input and gives no output, as the camera's controls
    const UsbAccess* access = loadFrom(L"ordinals");
    ASSERT_NE(access, nullptr);
    const std::wstring name = L"tavra-test-" + std::to_wstring(GetCurrentProcessId());
    const HANDLE file = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_FLAG_OVERLAPPED | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_NE(access->deviceControl(reinterpret_cast<TavraUsbDevice>(file), kSetSparse), 0);
    CloseHandle(file);
}

}  // namespace
}  // namespace tavra::platform
