// Frames of virtual cameras, byte by byte.
#include <gtest/gtest.h>

#include <thread>

#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::meanOf;
using test::numberOf;
using test::rawOf;
using test::Read;
using test::readTransfer;
using test::useCameras;

constexpr const char* kSmall = "mono:identity.maximum_width=64:identity.maximum_height=48:pace=off";

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
    const auto nextMean = [&] { return meanOf(rawOf(readTransfer(camera))); };
    const double before = nextMean();
    EXPECT_GT(before, 40);
    EXPECT_LT(before, 200);
    ASSERT_TRUE(camera.setStatus(0x8014, 32));
    EXPECT_NEAR(nextMean(), before / 2, 1) << "half the digital gain";
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

// Two regions, cut out of the frame of the whole sensor: one after the other, or as the grid that they span.
TEST(Stream, RegionsComeOneAfterAnotherOrAsAGrid) {
    const std::string sensor =
        "regions:pace=off:noise=off:geometry.sensor_width=96:geometry.sensor_height=64:geometry.x_step=2:"
        "geometry.width_step=4";
    // Twenty lines of exposure, whatever the frame.
    const auto expose = [](Camera& camera) {
        std::vector<std::uint8_t> block(64);
        storeLe16(&block[2], 20);
        return camera.set(33, 0, 0, block);
    };
    const auto record = [](Camera& camera, std::array<std::uint32_t, 8> places, std::uint32_t enabled) {
        auto bytes = camera.get(18, 0, 0, 176);
        EXPECT_EQ(bytes.size(), 176u);
        for (std::size_t i = 0; i < 4; ++i) storeLe32(&bytes[6 + 4 * i], places[i]);
        for (std::size_t i = 0; i < 4; ++i) storeLe32(&bytes[64 + 4 * i], places[4 + i]);
        storeLe32(&bytes[60], enabled);
        return bytes;
    };
    useCameras(sensor);
    std::vector<std::uint8_t> whole;
    {
        Camera camera;
        ASSERT_TRUE(camera.set(18, 0, 0, record(camera, {96, 64, 0, 0, 0, 0, 0, 0}, 1)));
        ASSERT_TRUE(expose(camera));
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        whole = rawOf(readTransfer(camera));
        UsbEndRead(camera.handle());
        ASSERT_EQ(whole.size(), 96u * 64);
    }
    std::vector<std::uint8_t> apart, grid;
    const auto cut = [&](std::vector<std::uint8_t>& to, std::size_t x, std::size_t y, std::size_t width) {
        const auto from = whole.begin() + static_cast<std::ptrdiff_t>(y * 96 + x);
        to.insert(to.end(), from, from + static_cast<std::ptrdiff_t>(width));
    };
    // 32 x 8 at (4, 4) and 40 x 12 at (48, 40).
    for (std::size_t y = 4; y < 12; ++y) cut(apart, 4, y, 32);
    for (std::size_t y = 40; y < 52; ++y) cut(apart, 48, y, 40);
    for (std::size_t y = 4; y < 52; ++y) {
        if (y >= 12 && y < 40) continue;
        cut(grid, 4, y, 32);
        cut(grid, 48, y, 40);
    }
    for (const std::uint32_t mode : {0u, 1u, 2u}) {
        useCameras(sensor + ":geometry.region_mode=" + std::to_string(mode));
        Camera camera;
        EXPECT_EQ(camera.page(25, 4), mode);
        ASSERT_TRUE(camera.set(18, 0, 0, record(camera, {32, 8, 4, 4, 40, 12, 48, 40}, 3)));
        ASSERT_TRUE(expose(camera));
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_EQ(rawOf(readTransfer(camera)), mode == 2 ? grid : apart) << "mode " << mode;
        UsbEndRead(camera.handle());
    }
}

// The four oldest types have nothing but the block of request 33.
TEST(Stream, ShutterAndGainOfTheOldestTypes) {
    for (const char* const name : {"legacy773", "legacy1541", "legacy1797", "legacy2053"}) {
        useCameras(std::string(name) + ":pace=off:noise=off:light=0.5:hotpixels=0");
        Camera camera;
        const auto meanAt = [&](std::uint16_t lines, std::uint16_t clocks, std::uint16_t gain) {
            std::vector<std::uint8_t> block(64);
            block[0] = 0x40;
            block[1] = 0x21;
            storeLe16(&block[2], lines);
            storeLe16(&block[4], clocks);
            storeLe16(&block[6], gain);
            EXPECT_TRUE(camera.set(33, 0, 0, block));
            EXPECT_EQ(camera.get(33, 0, 0, 64), block);
            EXPECT_EQ(UsbBeginRead(camera.handle()), 1);
            const double mean = meanOf(rawOf(readTransfer(camera)));
            UsbEndRead(camera.handle());
            return mean;
        };
        const double at400 = meanAt(400, 0, 0);
        EXPECT_NEAR(meanAt(200, 0, 0), at400 / 2, 0.6) << name;
        const std::uint16_t lineClocks = loadLe16(&camera.get(18, 0, 0, 64)[28]);
        EXPECT_NEAR(meanAt(199, lineClocks, 0), at400 / 2, 0.6) << name;
        // 3.96 dB in steps of 0.132.
        EXPECT_NEAR(meanAt(200, 0, 30), at400 / 2 * 1.5776, 1) << name;
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
