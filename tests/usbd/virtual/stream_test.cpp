// Frames of virtual cameras, byte by byte.
#include <gtest/gtest.h>

#include <thread>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::numberOf;
using test::Read;
using test::readTransfer;
using test::useCameras;

constexpr const char* kSmall = "mono:identity.maximum_width=64:identity.maximum_height=48:pace=off";

std::vector<std::uint8_t> rawOf(const std::vector<std::uint8_t>& frame) {
    return {frame.begin() + 64, frame.end()};
}

TEST(Stream, FramesHaveHeaderRawDataAndAscendingNumbers) {
    useCameras(kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (std::uint32_t i = 0; i < 20; ++i) {
        const auto frame = readTransfer(camera);
        ASSERT_EQ(frame.size(), 64u + 64 * 48);
        EXPECT_EQ(numberOf(frame), i);
    }
    EXPECT_EQ(UsbEndRead(camera.handle()), 1);
}

TEST(Stream, TheReadSizeDoesNotChangeTheBytes) {
    useCameras(std::string(kSmall) + ":noise=off");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto whole = rawOf(readTransfer(camera, 65536));
    for (const std::uint32_t size : {1024u, 2048u, 3072u, 4096u}) {
        EXPECT_EQ(rawOf(readTransfer(camera, size)), whole) << size;
    }
    UsbEndRead(camera.handle());
}

TEST(Stream, AFrameOfWholePacketsEndsWithAnEmptyRead) {
    // 64 + 64 * 31 = 2048 bytes: two packets.
    useCameras(
        "mono:pace=off:width=64:height=31:geometry.height_step=1:identity.maximum_width=64:"
        "identity.maximum_height=31");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    Read full(2048), empty(2048), next(4096);
    for (Read* read : {&full, &empty, &next}) ASSERT_EQ(read->start(camera), 997u);
    EXPECT_EQ(full.finish(camera), 2048u);
    EXPECT_EQ(empty.finish(camera), 0u);
    EXPECT_FALSE(empty.failed);
    EXPECT_EQ(next.finish(camera), 2048u) << "a read with room left ends with the empty packet";
    UsbEndRead(camera.handle());
}

TEST(Stream, TheHeaderMayComeApart) {
    useCameras(std::string(kSmall) + ":header=apart");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (std::uint32_t i = 0; i < 3; ++i) {
        const auto header = readTransfer(camera);
        ASSERT_EQ(header.size(), 64u);
        EXPECT_EQ(numberOf(header), i);
        EXPECT_EQ(readTransfer(camera).size(), 64u * 48) << "three whole packets and an empty one";
    }
    UsbEndRead(camera.handle());
}

TEST(Stream, TheSameSeedGivesTheSameBytes) {
    std::vector<std::vector<std::uint8_t>> first;
    for (int run = 0; run < 2; ++run) {
        useCameras(std::string(kSmall) + ":seed=5");
        Camera camera;
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        for (std::size_t i = 0; i < 5; ++i) {
            const auto frame = readTransfer(camera);
            if (run == 0) first.push_back(frame);
            if (run == 1) {
                EXPECT_EQ(frame, first[i]);
            }
        }
        UsbEndRead(camera.handle());
    }
    EXPECT_NE(rawOf(first[0]), rawOf(first[1])) << "noise differs from frame to frame";
    EXPECT_EQ(rawOf(first[0]), rawOf(first[4])) << "four variants";
}

TEST(Stream, ReadsAreFilledInTheirOrder) {
    useCameras(kSmall);
    Camera camera;
    std::vector<std::unique_ptr<Read>> reads;
    for (int i = 0; i < 70; ++i) {
        reads.push_back(std::make_unique<Read>(4096));
        ASSERT_EQ(reads.back()->start(camera), 997u);
    }
    EXPECT_EQ(reads[0]->look(camera), 996u) << "nothing comes before the stream has begun";
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (std::uint32_t i = 0; i < 70; ++i) {
        ASSERT_TRUE(reads[i]->event.wait(platform::kWaitForever));
        EXPECT_EQ(reads[i]->look(camera), 64u + 64 * 48);
        EXPECT_EQ(loadLe32(&reads[i]->bytes[12]), i);
    }
    UsbEndRead(camera.handle());
}

TEST(Stream, EndingCancelsEveryReadBeforeItReturns) {
    useCameras("mono:pace=on");
    Camera camera;
    std::vector<std::unique_ptr<Read>> reads;
    for (int i = 0; i < 8; ++i) {
        reads.push_back(std::make_unique<Read>(4096));
        ASSERT_EQ(reads.back()->start(camera), 997u);
    }
    EXPECT_EQ(UsbEndRead(camera.handle()), 1);
    for (const auto& read : reads) {
        EXPECT_TRUE(read->event.wait(0));
        EXPECT_EQ(read->look(camera), 995u);
    }
}

TEST(Stream, EndingInTheMiddleOfATransfer) {
    useCameras("mono:pace=off");
    for (int i = 0; i < 20; ++i) {
        Camera camera;
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        Read first(65536), second(65536);
        ASSERT_EQ(first.start(camera), 997u);
        EXPECT_EQ(first.finish(camera), 65536u);
        ASSERT_EQ(second.start(camera), 997u);
        EXPECT_EQ(UsbEndRead(camera.handle()), 1);
        const std::uint32_t result = second.look(camera);
        EXPECT_TRUE(second.failed ? result == 995 : result == 65536);
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_EQ(readTransfer(camera).size(), 64u + 1280 * 1024) << "a new run begins with a new frame";
        UsbEndRead(camera.handle());
    }
}

TEST(Stream, ClosingEndsAWaitOnAnotherThread) {
    useCameras("mono");
    Camera camera;
    Read read(4096);
    ASSERT_EQ(read.start(camera), 997u);
    std::thread waiter([&] {
        const std::uint32_t result = read.finish(camera);
        EXPECT_TRUE(read.failed);
        // 6 when the handle is gone before the wait begins.
        EXPECT_TRUE(result == 995 || result == 6) << result;
    });
    UsbClose(camera.handle());
    waiter.join();
}

TEST(Stream, AnotherOpeningDoesNotEndTheReads) {
    useCameras(kSmall);
    Camera reader;
    ASSERT_EQ(UsbBeginRead(reader.handle()), 1);
    {
        Camera other;
        EXPECT_EQ(other.get(17, 0, 0, 64).size(), 64u);
    }
    EXPECT_FALSE(readTransfer(reader).empty());
    UsbEndRead(reader.handle());
}

TEST(Stream, SettingsTakeEffectWithTheNextFrame) {
    useCameras("mono:identity.maximum_width=64:identity.maximum_height=48:pace=off:noise=off");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto meanOf = [&] {
        const auto raw = rawOf(readTransfer(camera));
        double sum = 0;
        for (const std::uint8_t byte : raw) sum += byte;
        return sum / static_cast<double>(raw.size());
    };
    const double before = meanOf();
    EXPECT_GT(before, 40);
    EXPECT_LT(before, 200);
    ASSERT_TRUE(camera.setStatus(0x8014, 32));
    EXPECT_NEAR(meanOf(), before / 2, 1) << "half the digital gain";
    ASSERT_TRUE(camera.setStatus(0x8014, 64));
    auto record = camera.get(18, 0, 0, 64);
    storeLe32(&record[6], 32);
    ASSERT_TRUE(camera.set(18, 0, 0, record));
    EXPECT_EQ(readTransfer(camera).size(), 64u + 32 * 48);
    UsbEndRead(camera.handle());
}

TEST(Stream, EveryTransferFormatHasTheSizeThatTheCameraTells) {
    for (const char* name : {"mono16", "bayer12p", "bgr", "ycbcr", "quad", "pattern", "regions", "bayer"}) {
        useCameras(std::string(name) + ":pace=off:identity.maximum_width=160:identity.maximum_height=120");
        Camera camera;
        ASSERT_TRUE(camera.open()) << name;
        const auto id = camera.get(17, 0, 0, 64);
        const std::uint32_t mask = loadLe32(&id[18]);
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        for (std::uint32_t bit = 0; bit < 32; ++bit) {
            if ((mask >> bit & 1) == 0) continue;
            std::vector<std::uint8_t> block{6, 0x13, 0, 0, 0, 0};
            storeLe32(&block[2], 1u << bit);
            ASSERT_TRUE(camera.set(19, 0, 0, block));
            const std::uint32_t told = loadLe32(camera.registers(17, 8, 8).data());
            EXPECT_EQ(readTransfer(camera).size(), 64u + told) << name << ", code " << (1u << bit);
        }
        UsbEndRead(camera.handle());
    }
}

TEST(Stream, APacedCameraKeepsItsFrameRate) {
    // 10 lines of 1000 clocks at 1 MHz: 10 ms a frame.
    useCameras(
        "usb2:geometry.sensor_width=32:geometry.sensor_height=4:timing.clocks_per_line=1000:"
        "timing.blank_lines=6:identity.clock_value=1000000");
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    readTransfer(camera);
    const auto before = std::chrono::steady_clock::now();
    const std::uint32_t first = numberOf(readTransfer(camera));
    std::uint32_t last = first;
    while (last < first + 5) last = numberOf(readTransfer(camera));
    const auto passed = std::chrono::steady_clock::now() - before;
    EXPECT_GE(passed, std::chrono::milliseconds(40))
        << "never faster; numbers count the frames that were lost";
    UsbEndRead(camera.handle());
}

TEST(Stream, TenCamerasAtOnce) {
    std::string list = kSmall;
    for (int i = 1; i < 10; ++i) list += std::string(",") + kSmall + ":seed=" + std::to_string(i + 1);
    useCameras(list);
    std::vector<std::thread> threads;
    for (std::uint32_t i = 0; i < 10; ++i) {
        threads.emplace_back([i] {
            Camera camera(i);
            ASSERT_TRUE(camera.open());
            ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
            for (std::uint32_t n = 0; n < 50; ++n) {
                const auto frame = readTransfer(camera, 2048);
                ASSERT_EQ(frame.size(), 64u + 64 * 48);
                ASSERT_EQ(numberOf(frame), n);
            }
            UsbEndRead(camera.handle());
        });
    }
    for (auto& thread : threads) thread.join();
}

TEST(Stream, ControlTransfersRunBesideReads) {
    useCameras(kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    std::thread control([&] {
        for (int i = 0; i < 300; ++i) {
            ASSERT_TRUE(camera.setStatus(0x8014, static_cast<std::uint16_t>(60 + i % 8)));
            ASSERT_EQ(camera.get(18, 0, 0, 64).size(), 64u);
        }
    });
    for (int i = 0; i < 100; ++i) EXPECT_EQ(readTransfer(camera).size(), 64u + 64 * 48);
    control.join();
    UsbEndRead(camera.handle());
}

TEST(Stream, AThousandRuns) {
    useCameras(kSmall);
    for (int i = 0; i < 1000; ++i) {
        Read read(4096);  // outlives the camera, which ends it
        Camera camera;
        ASSERT_EQ(read.start(camera), 997u);
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        if (i % 2 == 0) {
            ASSERT_EQ(read.finish(camera), 64u + 64 * 48);
        }
    }
}

}  // namespace
}  // namespace tavra::usbd
