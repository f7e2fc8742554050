// A small camera that streams what the test sends, and a receiver for the messages of its stream.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "camera/common_param.h"
#include "platform/event.h"
#include "platform/usb_access.h"
#include "support/message_receiver.h"
#include "support/usb_double/usb_double_fixture.h"
#include "tavra/tavra_api.h"

namespace tavra::test {

inline constexpr std::uint32_t kPatienceMs = 10000;
inline constexpr std::uint16_t kHeaderSize = 64;

struct SeenRaw {
    Bytes data;
    std::uint32_t width, height, number;
    std::uint16_t colorArray;
    std::uint32_t transferBits;
    std::uint32_t word;  // before the callback counted it up
};

struct SeenImage {
    Bytes data;
    std::uint32_t width, height, number, format, word;
};

// What callbacks saw, in order. Any thread.
template <typename Seen>
class Collected {
  public:
    void add(Seen seen) {
        const std::lock_guard lock(mutex_);
        all_.push_back(std::move(seen));
        changed_.set();
    }
    // Waits until there are so many; fewer only if they do not come.
    std::vector<Seen> waitFor(std::size_t count) {
        for (;;) {
            {
                const std::lock_guard lock(mutex_);
                if (all_.size() >= count) return all_;
            }
            if (!changed_.wait(kPatienceMs)) break;
        }
        const std::lock_guard lock(mutex_);
        return all_;
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return all_.size();
    }

  private:
    std::mutex mutex_;
    std::vector<Seen> all_;
    platform::Event changed_{platform::Event::Reset::Auto};
};

class StreamTest : public UsbDoubleTest {
  protected:
    ~StreamTest() override {
        if (handle != nullptr) Tavra_Close(handle);
    }

    // Describes a camera of 6 x 4 pixels.
    DoubleCamera& describe(std::uint32_t transferBits = 1, std::uint16_t colorArray = 1,
                           std::uint32_t width = 6, std::uint32_t height = 4) {
        DoubleCamera& camera = usb.addCamera();
        camera.setScan32(6, width);
        camera.setScan32(10, height);
        camera.setIdentity16(10, colorArray);
        camera.setIdentity32(18,
                             transferBits | 0x8000);  // more than one code: the camera is asked for its own
        camera.transferBits = transferBits;
        return camera;
    }

    void open() {
        handle = Tavra_Open(0);
        ASSERT_NE(handle, nullptr);
        ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, receiver.window()));
        ASSERT_TRUE(Tavra_GetRawDataSize(handle, &rawSize));
        usb.forgetTraffic();
    }

    void openCamera(std::uint32_t transferBits = 1, std::uint16_t colorArray = 1, std::uint32_t width = 6,
                    std::uint32_t height = 4) {
        describe(transferBits, colorArray, width, height);
        open();
    }

    TAVRA_COMMON_PARAM& record() { return *static_cast<TAVRA_COMMON_PARAM*>(handle); }

    // The operations that the open camera uses, for a test that puts one of its own in place of the double's.
    platform::UsbAccess& operations() {
        static platform::UsbAccess replaced;
        ControlChannel& control = record().control;
        if (control.access() != &replaced) {
            doublesOperations = control.access();
            replaced = *doublesOperations;
            control.attach(replaced, control.device());
        }
        return replaced;
    }
    static inline const platform::UsbAccess* doublesOperations = nullptr;

    // A header with a frame number, and a transfer of header and data.
    static Bytes header(std::uint32_t number) {
        Bytes bytes(kHeaderSize, 0xEE);
        for (unsigned i = 0; i < 4; ++i) bytes[12 + i] = static_cast<std::uint8_t>(number >> 8 * i);
        return bytes;
    }
    Bytes pattern(std::uint8_t seed) const {
        Bytes raw(rawSize);
        for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<std::uint8_t>(seed + 3 * i);
        return raw;
    }
    void send(Bytes bytes) { usb.pushBulk(0, {std::move(bytes)}); }
    void sendError(std::uint32_t code) {
        BulkTransfer transfer;
        transfer.error = code;
        usb.pushBulk(0, transfer);
    }
    void sendFrame(std::uint32_t number, const Bytes& raw) {
        const Bytes head = header(number);
        Bytes bytes(kHeaderSize + raw.size());
        std::copy(head.begin(), head.end(), bytes.begin());
        std::copy(raw.begin(), raw.end(), bytes.begin() + kHeaderSize);
        send(std::move(bytes));
    }

    // The next message, which must be this one of this camera; its second parameter.
    std::uint64_t expectMessage(std::uint32_t message) {
        ReceivedMessage got;
        EXPECT_TRUE(receiver.wait(got, kPatienceMs)) << "no message came";
        EXPECT_EQ(got.message, message);
        EXPECT_EQ(got.parameter1, reinterpret_cast<std::uintptr_t>(handle));
        return got.parameter2;
    }
    void expectNoMessage() {
        ReceivedMessage got;
        EXPECT_FALSE(receiver.wait(got, 0)) << "message " << got.message;
    }

    // What settings of geometry tell of mask and destination.
    void forgetPlaces() {
        for (ReceivedMessage got; receiver.wait(got, 0);) {
            EXPECT_TRUE(got.message == TAVRA_MESSAGE_MASK_CHANGED ||
                        got.message == TAVRA_MESSAGE_DESTINATION_CHANGED)
                << got.message;
        }
    }

    // Starts and waits until the stream runs.
    void start() {
        forgetPlaces();
        ASSERT_TRUE(Tavra_StartTransfer(handle));
        expectMessage(TAVRA_MESSAGE_TRANSFER_STARTED);
    }
    void stopAndExpectCode(std::uint32_t code) {
        ASSERT_TRUE(Tavra_StopTransfer(handle));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), code);
    }

    std::uint32_t collectRaw() {
        std::uint32_t identifier = 0;
        EXPECT_TRUE(Tavra_AddRawCallback(handle, seeRaw, &raws, &identifier));
        return identifier;
    }
    std::uint32_t collectImages() {
        std::uint32_t identifier = 0;
        EXPECT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &images, &identifier));
        return identifier;
    }

    static void seeRaw(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                       std::uint32_t number, std::uint16_t colorArray, std::uint32_t transferBits,
                       void* context, std::uint32_t* word) {
        const auto* const bytes = static_cast<std::uint8_t*>(data);
        static_cast<Collected<SeenRaw>*>(context)->add(
            {Bytes(bytes, bytes + size), width, height, number, colorArray, transferBits, (*word)++});
    }
    static void seeImage(void* image, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                         std::uint32_t number, std::uint32_t format, void* context, std::uint32_t* word) {
        const auto* const bytes = static_cast<std::uint8_t*>(image);
        static_cast<Collected<SeenImage>*>(context)->add(
            {Bytes(bytes, bytes + size), width, height, number, format, (*word)++});
    }

    std::uint32_t lastError() const { return Tavra_GetLastError(handle); }
    std::size_t callsOf(const std::string& name) {
        std::size_t count = 0;
        for (const OperationCall& call : usb.calls()) count += call.name == name ? 1 : 0;
        return count;
    }
    // Looks again and again; the double tells of reads, not of calls.
    bool waitForCalls(const std::string& name, std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
        while (callsOf(name) < count) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::yield();
        }
        return true;
    }

    TavraHandle handle = nullptr;
    MessageReceiver receiver;
    std::uint32_t rawSize = 0;
    Collected<SeenRaw> raws;
    Collected<SeenImage> images;
};

}  // namespace tavra::test
