// Mirror and rotation on the way of a frame: where they act, what they make of every class, and what happens
// when they fail.
#include <optional>

#include "capture_api/chain_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

class OrientationPath : public ChainTest {
  protected:
    struct Size {
        std::uint32_t width, height;
    };
    void expectAsPlain(const ChainFrame& frame, bool dressed = true) {
        ASSERT_NO_FATAL_FAILURE(open(frame));
        PlainChain plain(frame);
        if (dressed) {
            ASSERT_NO_FATAL_FAILURE(dress(record(), frame.width, frame.height));
            ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), frame.width, frame.height));
        }
        const Bytes raw = noise(frame.transferBits + frame.mirror + 4u * frame.rotation);
        const SeenImage seen = preview(raw);
        EXPECT_EQ(seen.data, plain.image(raw));
        EXPECT_EQ(seen.width, plain.width());
        EXPECT_EQ(seen.height, plain.height());
        close();
    }
    // Runs through all eight ways to turn a frame.
    template <typename Check>
    static void forEachTurn(Check check) {
        for (std::uint8_t rotation = 0; rotation < 3; ++rotation) {
            for (std::uint8_t mirror = 0; mirror < 4; ++mirror) {
                SCOPED_TRACE(testing::Message() << "mirror " << +mirror << ", rotation " << +rotation);
                check(mirror, rotation);
            }
        }
    }
    // Where pixel (x, y) of a w x h frame goes: the mirror first, then the quarter turn.
    static Size placeOf(Size at, Size size, std::uint8_t mirror, std::uint8_t rotation) {
        if (mirror & 1) at.width = size.width - 1 - at.width;
        if (mirror & 2) at.height = size.height - 1 - at.height;
        if (rotation == 1) return {size.height - 1 - at.height, at.width};
        if (rotation == 2) return {at.height, size.width - 1 - at.width};
        return at;
    }
};

// Rows that are no multiple of four bytes, in the frame as well as in the image.
TEST_F(OrientationPath, EveryClassIsTurnedInItsPlace) {
    forEachTurn([&](std::uint8_t mirror, std::uint8_t rotation) {
        for (const std::uint32_t code : {1u, 4u, 0x10000u, 32u, 128u, 0x200000u, 1024u, 2048u}) {
            SCOPED_TRACE(code);
            const std::uint32_t width = (code & 0x330000) != 0 ? 4 : 7;
            expectAsPlain({.width = width,
                           .height = 6,
                           .transferBits = code,
                           .colorArray = 2,
                           .mirror = mirror,
                           .rotation = rotation});
        }
    });
}

// Every YCbCr layout, at every preview format. The sizes are such that rows have no padding before and after
// the turn.
TEST_F(OrientationPath, YcbcrIsTurnedAsAnImage) {
    const std::uint32_t codes[] = {4096, 8192, 16384, 0x1000000, 0x2000000, 0x4000000};
    const std::uint32_t formats[] = {1, 4, 8};
    forEachTurn([&](std::uint8_t mirror, std::uint8_t rotation) {
        for (const std::uint32_t code : codes) {
            const std::uint32_t format = formats[(mirror + rotation) % 3];
            SCOPED_TRACE(testing::Message() << "transfer bits " << code << ", preview " << format);
            expectAsPlain({.width = 8,
                           .height = 4,
                           .transferBits = code,
                           .colorArray = 1,
                           .previewFormat = format,
                           .mirror = mirror,
                           .rotation = rotation});
        }
    });
}

// Without the library's stages: each pixel where it belongs. Mono frames and grey previews have one byte a
// pixel, BGR has three.
TEST_F(OrientationPath, EveryPixelGoesWhereItBelongs) {
    constexpr Size kSize{8, 4};
    forEachTurn([&](std::uint8_t mirror, std::uint8_t rotation) {
        for (const std::uint32_t code : {1u, 32u, 1024u, 2048u, 16384u}) {
            SCOPED_TRACE(code);
            const bool isBgr = code == 1024 || code == 2048;
            ASSERT_NO_FATAL_FAILURE(open({.width = kSize.width,
                                          .height = kSize.height,
                                          .transferBits = code,
                                          .colorArray = 1,
                                          .previewFormat = isBgr ? 4u : 1u,
                                          .mirror = mirror,
                                          .rotation = rotation}));
            Bytes raw = noise(3);
            if (code == 16384) {  // Y, Cb, Cr, without colour
                for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = i % 3 == 0 ? raw[i] : 128;
            }
            const SeenImage seen = preview(raw);
            const Size turned = rotation == 0 ? kSize : Size{kSize.height, kSize.width};
            const std::uint32_t pixelBytes = isBgr ? 3 : 1;
            // What the image has of channel c of a pixel.
            const auto sample = [&](std::uint32_t pixel, std::uint32_t c) -> std::uint32_t {
                if (code == 1 || code == 32) return raw[pixel];
                if (code != 2048) return raw[pixel * 3 + c];
                std::uint64_t word = 0;
                for (unsigned i = 0; i < 4; ++i) word |= std::uint64_t{raw[pixel * 4 + i]} << (8 * i);
                return static_cast<std::uint32_t>(word >> (10 * c + 2) & 0xFF);
            };
            ASSERT_EQ(seen.width, turned.width);
            ASSERT_EQ(seen.height, turned.height);
            ASSERT_EQ(seen.data.size(), kSize.width * kSize.height * pixelBytes);
            for (std::uint32_t y = 0; y < kSize.height; ++y) {
                for (std::uint32_t x = 0; x < kSize.width; ++x) {
                    const Size to = placeOf({x, y}, kSize, mirror, rotation);
                    for (std::uint32_t c = 0; c < pixelBytes; ++c) {
                        ASSERT_EQ(seen.data[(to.height * turned.width + to.width) * pixelBytes + c],
                                  sample(y * kSize.width + x, c))
                            << x << ", " << y;
                    }
                }
            }
            close();
        }
    });
}

// A mosaic's colours stay with their pixels.
TEST_F(OrientationPath, TheColorArrayTurnsAlong) {
    constexpr Size kSize{8, 4};
    for (std::uint16_t array = 2; array <= 5; ++array) {
        forEachTurn([&](std::uint8_t mirror, std::uint8_t rotation) {
            SCOPED_TRACE(array);
            ASSERT_NO_FATAL_FAILURE(open({.width = kSize.width,
                                          .height = kSize.height,
                                          .colorArray = array,
                                          .method = 1,
                                          .mirror = mirror,
                                          .rotation = rotation}));
            static const char* const kCells[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
            const Bytes raw = noise(array);
            const SeenImage seen = preview(raw);
            const std::uint32_t width = rotation == 0 ? kSize.width : kSize.height;
            ASSERT_EQ(seen.data.size(), raw.size() * 3);
            for (std::uint32_t y = 0; y < kSize.height; ++y) {
                for (std::uint32_t x = 0; x < kSize.width; ++x) {
                    const Size to = placeOf({x, y}, kSize, mirror, rotation);
                    const char color = kCells[array - 2][2 * (y & 1) + (x & 1)];
                    const std::uint32_t channel = color == 'B' ? 0 : color == 'G' ? 1 : 2;
                    for (std::uint32_t c = 0; c < 3; ++c) {
                        ASSERT_EQ(seen.data[(to.height * width + to.width) * 3 + c],
                                  c == channel ? raw[y * kSize.width + x] : 0)
                            << x << ", " << y;
                    }
                }
            }
            close();
        });
    }
}

TEST_F(OrientationPath, ARotationThatIsNoneTurnsNothing) {
    for (const std::uint8_t rotation : {3, 4, 128, 255}) {
        for (const std::uint8_t mirror : {0, 2}) {
            for (const std::uint32_t code : {1u, 32u, 1024u, 16384u}) {
                SCOPED_TRACE(testing::Message() << +rotation << ", transfer bits " << code);
                ASSERT_NO_FATAL_FAILURE(open({.width = 8,
                                              .height = 4,
                                              .transferBits = code,
                                              .colorArray = 1,
                                              .mirror = mirror,
                                              .rotation = rotation}));
                const Bytes raw = noise(7);
                const SeenImage seen = preview(raw);
                PlainChain plain({.width = 8,
                                  .height = 4,
                                  .transferBits = code,
                                  .colorArray = 1,
                                  .mirror = mirror,
                                  .rotation = 0});
                EXPECT_EQ(seen.data, plain.image(raw));
                EXPECT_EQ(seen.width, 8u);
                EXPECT_EQ(record().imagesA.image(1).frameNumber, 1u) << "the images without rotation";
                EXPECT_EQ(record().imagesB.image(1).frameNumber, 0u);
                close();
            }
        }
    }
}

TEST_F(OrientationPath, AQuarterTurnUsesTheOtherImages) {
    ASSERT_NO_FATAL_FAILURE(open({.width = 8, .height = 4, .colorArray = 1, .rotation = 1}));
    preview(noise(1));
    EXPECT_EQ(record().imagesA.image(1).frameNumber, 0u);
    EXPECT_EQ(record().imagesB.image(1).frameNumber, 1u);
}

TEST_F(OrientationPath, ARotationTakesEffectWhileTheStreamRuns) {
    ASSERT_NO_FATAL_FAILURE(open({.width = 8, .height = 4, .colorArray = 2}));
    const std::uint8_t* pixels[2][3] = {};
    const auto look = [&](const std::uint8_t*(&into)[2][3]) {
        for (std::uint32_t i = 0; i < 3; ++i) {
            into[0][i] = record().imagesA.image(i).bitmap.pixels();
            into[1][i] = record().imagesB.image(i).bitmap.pixels();
        }
    };
    look(pixels);
    collectImages();
    start();
    const Bytes raw = noise(2);
    const std::uint8_t rotations[] = {0, 1, 2, 0, 7};
    std::uint32_t number = 0;
    for (const std::uint8_t rotation : rotations) {
        SCOPED_TRACE(int{rotation});
        ASSERT_TRUE(Tavra_SetRotationMode(handle, rotation));
        forgetPlaces();
        sendFrame(++number, raw);
        const auto seen = images.waitFor(number);
        ASSERT_EQ(seen.size(), number);
        const bool turned = rotation == 1 || rotation == 2;
        EXPECT_EQ(seen.back().width, turned ? 4u : 8u);
        EXPECT_EQ(seen.back().height, turned ? 8u : 4u);
        PlainChain plain({.width = 8, .height = 4, .colorArray = 2, .rotation = rotation});
        EXPECT_EQ(seen.back().data, plain.image(raw));
    }
    stopAndExpectCode(0);
    const std::uint8_t* afterwards[2][3] = {};
    look(afterwards);
    for (int set = 0; set < 2; ++set) {
        for (int i = 0; i < 3; ++i) EXPECT_EQ(afterwards[set][i], pixels[set][i]) << "made anew";
    }
}

// Sizes whose rows are padded otherwise when they are exchanged.
TEST_F(OrientationPath, ThePreviewIsOfTheSizeThatIsTold) {
    for (const std::uint8_t rotation : {0, 1, 2, 3, 255}) {
        SCOPED_TRACE(int{rotation});
        ASSERT_NO_FATAL_FAILURE(
            open({.width = 7, .height = 4, .colorArray = 1, .previewFormat = 1, .rotation = rotation}));
        std::uint32_t width = 0, height = 0, line = 0, total = 0;
        ASSERT_TRUE(Tavra_GetPreviewDataSize(handle, &total, &width, &height, &line));
        const SeenImage seen = preview(noise(1));
        EXPECT_EQ(seen.width, width);
        EXPECT_EQ(seen.height, height);
        EXPECT_EQ(seen.data.size(), total);
        EXPECT_EQ(total, rotation == 1 || rotation == 2 ? 4u * 7 : 8u * 4);
        close();
    }
}

void drawNothing(TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void*, std::uint32_t) {}

TEST_F(OrientationPath, ThePublishedImageIsTheOneThatIsLookedAt) {
    ASSERT_NO_FATAL_FAILURE(open({.width = 8, .height = 4, .colorArray = 1, .previewFormat = 1}));
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, drawNothing, nullptr, &identifier));
    start();
    std::uint32_t number = 0;
    for (const std::uint8_t rotation : {0, 1, 3, 2, 0, 4, 1}) {
        SCOPED_TRACE(int{rotation});
        ASSERT_TRUE(Tavra_SetRotationMode(handle, rotation));
        forgetPlaces();
        const Bytes raw = noise(++number);
        sendFrame(number, raw);
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), number);
        for (std::uint32_t y = 0; y < 4; ++y) {
            for (std::uint32_t x = 0; x < 8; ++x) {
                const Size at = placeOf({x, y}, {8, 4}, 0, rotation);
                std::uint32_t value = 0;
                ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, at.width, at.height, &value));
                ASSERT_EQ(value, raw[y * 8 + x] * 0x10101u) << x << ", " << y;
            }
        }
    }
    stopAndExpectCode(0);
}

TEST_F(OrientationPath, TheCamerasMirrorChangesWithTheNextFrame) {
    DoubleCamera& camera = describe(1, 5, 6, 4);
    camera.setCapability(1, 6);
    StreamTest::open();
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 1));
    collectRaw();
    collectImages();
    start();
    const Bytes raw = noise(4);
    const std::uint8_t modes[] = {0, 16, 17, 0};
    const std::uint16_t arrays[] = {5, 4, 4, 5};
    for (std::uint32_t i = 0; i < 4; ++i) {
        ASSERT_TRUE(Tavra_SetMirrorMode(handle, modes[i]));
        sendFrame(i, raw);
        const auto seen = images.waitFor(i + 1);
        ASSERT_EQ(seen.size(), i + 1);
        EXPECT_EQ(raws.waitFor(i + 1)[i].colorArray, arrays[i]);
        PlainChain plain({.width = 6,
                          .height = 4,
                          .colorArray = arrays[i],
                          .method = 1,
                          .mirror = static_cast<std::uint8_t>(modes[i] & 3)});
        EXPECT_EQ(seen[i].data, plain.image(raw)) << i;
    }
    stopAndExpectCode(0);
}

// Takes the memory away that a quarter turn needs, for frame 2 alone. On the capture thread, whose
// allocations are meant.
struct Scarcity {
    static constexpr std::uint32_t kFrame = 2;

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t number,
                         std::uint16_t, std::uint32_t, void* context, std::uint32_t*) {
        auto& failing = static_cast<Scarcity*>(context)->failing;
        failing.reset();
        if (number == kFrame) failing.emplace(64 * 32);
    }
    std::optional<FailAllocationsFrom> failing;
};

TEST_F(OrientationPath, AFailedTurnCostsTheFrameItsPreviewAndNothingElse) {
    for (const std::uint32_t code : {1u, 32u, 1024u, 16384u}) {
        SCOPED_TRACE(code);
        ASSERT_NO_FATAL_FAILURE(open({.width = 64, .height = 32, .transferBits = code, .colorArray = 1}));
        Scarcity scarcity;
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, Scarcity::callback, &scarcity, &identifier));
        Collected<SeenImage> seen;
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &seen, &identifier));
        start();
        sendFrame(1, noise(1));  // a turn would keep its memory for the next, so none yet
        ASSERT_EQ(seen.waitFor(1).size(), 1u);
        ASSERT_TRUE(Tavra_SetRotationMode(handle, 1));
        forgetPlaces();
        sendFrame(2, noise(2));
        sendFrame(3, noise(3));
        const auto all = seen.waitFor(2);
        ASSERT_EQ(all.size(), 2u);
        EXPECT_EQ(all[0].number, 1u);
        EXPECT_EQ(all[1].number, 3u) << "the second was abandoned, the run went on";
        EXPECT_EQ(all[1].width, 32u);
        EXPECT_EQ(all[1].height, 64u);
        stopAndExpectCode(8);
        close();
    }
}

}  // namespace
}  // namespace tavra::test
