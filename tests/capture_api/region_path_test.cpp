// Frames of several regions become one image before any stage.
#include "capture_api/chain_fixture.h"
#include "capture_api/region_camera.h"

namespace tavra::test {
namespace {

class RegionPath : public ChainTest {
  protected:
    // The first region is the main image. The frame holds them one after the other.
    void openRegions(const std::vector<Region>& regions, const ChainFrame& frame, std::uint32_t mode = 0) {
        DoubleCamera& camera = describe(frame.transferBits, frame.colorArray);
        const std::uint32_t bytes = useRegions(camera, regions, transferBitsPerPixel(frame.transferBits));
        camera.pageRegister(25, 4) = mode;
        if (frame.reducesNoise) camera.status(48) = kReducingTrigger;
        StreamTest::open();
        ASSERT_EQ(rawSize, bytes);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, frame.previewFormat));
        ASSERT_TRUE(Tavra_SetMirrorMode(handle, frame.mirror));
        ASSERT_TRUE(Tavra_SetRotationMode(handle, frame.rotation));
    }
    // Mono frames of 8 bits that have only so many bytes.
    void openShort(const std::vector<Region>& regions, std::uint32_t bytes) {
        DoubleCamera& camera = describe(1, 1);
        useRegions(camera, regions, 8);
        camera.registers[{17, 8}] = bytes;
        StreamTest::open();
        ASSERT_EQ(rawSize, bytes);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, 1));
    }
    // So many frames reach their raw consumers, and no other.
    void expectNoPreviewOf(std::uint32_t frames) {
        Collected<SeenRaw> seen;
        Collected<SeenImage> none;
        std::uint32_t raw = 0, image = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, seeRaw, &seen, &raw));
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &none, &image));
        start();
        for (std::uint32_t i = 1; i <= frames; ++i) sendFrame(i, noise(i));
        EXPECT_EQ(seen.waitFor(frames).size(), frames);
        stopAndExpectCode(0);
        EXPECT_EQ(none.count(), 0u);
    }
    // Two regions of so many bytes a row side by side, the second below the first.
    static Bytes diagonal(const Bytes& raw, std::size_t rowBytes, std::size_t rows) {
        Bytes composed(4 * rowBytes * rows);
        for (std::size_t i = 0; i < raw.size(); ++i) {
            const std::size_t row = i / rowBytes;
            composed[row * 2 * rowBytes + (row < rows ? 0 : rowBytes) + i % rowBytes] = raw[i];
        }
        return composed;
    }
};

TEST_F(RegionPath, TheyAreComposedByHand) {
    openRegions({{4, 2, 0, 0}, {2, 1, 3, 7}}, {.colorArray = 1, .previewFormat = 1});
    const SeenImage seen = preview({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(seen.width, 5u);
    EXPECT_EQ(seen.height, 3u);
    const Bytes expected{1, 2, 3, 4, 0,  0, 0, 0,   // columns 0 to 4, and padding
                         5, 6, 7, 8, 0,  0, 0, 0,   //
                         0, 0, 0, 9, 10, 0, 0, 0};  // row 7
    EXPECT_EQ(seen.data, expected);
}

// Of every class: the stages see the image that was composed of what the camera sent.
TEST_F(RegionPath, TheStagesSeeTheComposedImage) {
    for (const std::uint32_t code : {1u, 4u, 0x10000u, 0x20000u, 32u, 64u, 0x100000u, 1024u, 8192u, 16384u}) {
        for (const std::uint8_t rotation : {0, 1}) {
            SCOPED_TRACE(testing::Message() << "transfer bits " << code << ", rotation " << +rotation);
            const ChainFrame frame{.width = 8,
                                   .height = 4,
                                   .transferBits = code,
                                   .colorArray = 2,
                                   .mirror = 1,
                                   .rotation = rotation};
            openRegions({{4, 2, 0, 0}, {4, 2, 20, 30}}, frame);
            ASSERT_NO_FATAL_FAILURE(dress(record(), 8, 4));
            PlainChain plain(frame);
            ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), 8, 4));
            const Bytes raw = noise(code);
            EXPECT_EQ(preview(raw).data, plain.image(diagonal(raw, 4 * transferBitsPerPixel(code) / 8, 2)));
            close();
        }
    }
}

TEST_F(RegionPath, StatisticsAreOfTheComposedImage) {
    openRegions({{8, 8, 0, 0}, {8, 8, 100, 100}}, {.colorArray = 1, .previewFormat = 1});
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    preview(Bytes(rawSize, 100));
    CAveragePixelValue::Weights weights{};
    CAveragePixelValue::Means means{};
    weights[0] = 1;  // top left
    record().statistics.GetWeightedAverage(weights, means);
    EXPECT_EQ(means[0], 100);
    weights = {};
    weights[3] = 1;  // top right, which no region covers
    record().statistics.GetWeightedAverage(weights, means);
    EXPECT_EQ(means[0], 0);
}

TEST_F(RegionPath, RawConsumersSeeTheRegionsAsSent) {
    openRegions({{4, 2, 0, 0}, {4, 2, 20, 30}}, {.colorArray = 1, .previewFormat = 1});
    collectRaw();
    const Bytes raw = noise(1);
    preview(raw);
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].data, raw);
    EXPECT_EQ(seen[0].width, 4u) << "the main image";
    EXPECT_EQ(seen[0].height, 2u);
}

// From frame to frame nothing of the last one stays, although the stages work on the canvas itself and a
// mirror leaves pixels where no region is.
TEST_F(RegionPath, EveryFrameIsComposedAnew) {
    const struct {
        std::uint32_t code;
        std::uint16_t colorArray;
        std::uint8_t mirror, rotation;
    } kinds[] = {{1, 1, 1, 0}, {1, 2, 1, 0}, {1, 3, 2, 0},  {4, 4, 3, 1},
                 {1, 5, 0, 2}, {1, 2, 2, 1}, {32, 1, 1, 0}, {1024, 1, 2, 0}};
    for (const auto& kind : kinds) {
        SCOPED_TRACE(testing::Message()
                     << "transfer bits " << kind.code << ", colour array " << kind.colorArray << ", mirror "
                     << +kind.mirror << ", rotation " << +kind.rotation);
        const ChainFrame frame{.width = 8,
                               .height = 4,
                               .transferBits = kind.code,
                               .colorArray = kind.colorArray,
                               .mirror = kind.mirror,
                               .rotation = kind.rotation,
                               .reducesNoise = true};
        openRegions({{4, 2, 0, 0}, {4, 2, 20, 30}}, frame);
        ASSERT_NO_FATAL_FAILURE(dress(record(), 8, 4));
        PlainChain plain(frame);
        ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), 8, 4));
        Collected<SeenImage> seen;
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, seeImage, &seen, &identifier));
        start();
        for (std::uint32_t number = 1; number <= 4; ++number) {
            const Bytes raw = noise(100 * kind.code + number);
            sendFrame(number, raw);
            const auto all = seen.waitFor(number);
            ASSERT_EQ(all.size(), number);
            const std::size_t rowBytes = 4 * transferBitsPerPixel(kind.code) / 8;
            EXPECT_EQ(all.back().data, plain.image(diagonal(raw, rowBytes, 2))) << "frame " << number;
        }
        stopAndExpectCode(0);
        close();
    }
}

// All frames of a camera are composed under one number. So the first that lacks a region is no image, as not
// all regions were there; from the next one on the count of the regions is full, and what is missing is
// black.
TEST_F(RegionPath, FramesTooShortForTheirRegionsAreImagesFromTheCountOfRegionsOn) {
    openShort({{4, 2, 0, 0}, {4, 2, 20, 30}, {4, 2, 40, 60}}, 8 + 8 + 7);
    collectRaw();
    collectImages();
    start();
    for (std::uint32_t i = 1; i <= 4; ++i) sendFrame(i, noise(i));
    const auto seen = images.waitFor(3);
    ASSERT_EQ(seen.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(seen[i].number, i + 2) << "the first frame has two regions of three";
        EXPECT_EQ(seen[i].width, 12u);
        EXPECT_EQ(seen[i].height, 6u);
        const Bytes raw = noise(i + 2);
        Bytes expected(std::size_t{12} * 6);
        for (std::size_t at = 0; at < 16; ++at) expected[at / 4 * 12 + (at < 8 ? 0 : 4) + at % 4] = raw[at];
        EXPECT_EQ(seen[i].data, expected) << i;
    }
    EXPECT_EQ(raws.waitFor(4).size(), 4u) << "raw consumers have every frame";
    stopAndExpectCode(0);
}

// Not even the first region is there. The frame has no preview, and the stream goes on.
TEST_F(RegionPath, AFrameWithoutAWholeRegionHasNoPreview) {
    openShort({{4, 2, 0, 0}, {4, 2, 20, 30}}, 7);
    expectNoPreviewOf(3);
}

// Ten bits in words exist for mono only: no pixel format tells what a mosaic of them is made of.
TEST_F(RegionPath, AFrameWithoutAPixelFormatHasNoPreview) {
    for (const auto& [code, colorArray] :
         {std::pair<std::uint32_t, std::uint16_t>{8, 2}, {16, 12}, {1, 20}}) {
        SCOPED_TRACE(testing::Message() << "transfer bits " << code << ", colour array " << colorArray);
        openRegions({{4, 2, 0, 0}, {4, 2, 20, 30}}, {.transferBits = code, .colorArray = colorArray});
        expectNoPreviewOf(3);
        close();
    }
}

// What the camera has composed itself is the image as it comes: rows of all regions side by side.
TEST_F(RegionPath, AFrameThatTheCameraHasComposedGoesOnAsItIs) {
    for (const std::uint32_t code : {1u, 4u, 0x10000u, 32u, 1024u, 8192u}) {
        for (const std::uint8_t rotation : {0, 1}) {
            SCOPED_TRACE(testing::Message() << "transfer bits " << code << ", rotation " << +rotation);
            const ChainFrame frame{.width = 12,
                                   .height = 6,
                                   .transferBits = code,
                                   .colorArray = 2,
                                   .mirror = 2,
                                   .rotation = rotation};
            openRegions({{8, 4, 0, 0}, {4, 4, 20, 0}, {8, 2, 0, 30}, {4, 2, 20, 30}}, frame, 2);
            ASSERT_NO_FATAL_FAILURE(dress(record(), 12, 6));
            PlainChain plain(frame);
            ASSERT_NO_FATAL_FAILURE(dress(plain.stages(), 12, 6));
            const Bytes raw = noise(code);
            EXPECT_EQ(preview(raw).data, plain.image(raw));
            close();
        }
    }
}

}  // namespace
}  // namespace tavra::test
