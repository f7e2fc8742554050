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
        StreamTest::open();
        ASSERT_EQ(rawSize, bytes);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, frame.previewFormat));
        ASSERT_TRUE(Tavra_SetMirrorMode(handle, frame.mirror));
        ASSERT_TRUE(Tavra_SetRotationMode(handle, frame.rotation));
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

// From frame to frame nothing of the last one stays.
TEST_F(RegionPath, EveryFrameIsComposedAnew) {
    openRegions({{4, 2, 0, 0}, {4, 2, 20, 30}}, {.colorArray = 1, .previewFormat = 1});
    collectImages();
    start();
    for (std::uint32_t i = 1; i <= 3; ++i) sendFrame(i, noise(i));
    const auto seen = images.waitFor(3);
    ASSERT_EQ(seen.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(seen[i].data, diagonal(noise(i + 1), 4, 2)) << i;
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
