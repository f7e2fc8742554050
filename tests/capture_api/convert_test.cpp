// Conversions of frames and images in the caller's memory.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

TEST_F(TriggerTest, ARawFrameBecomesBgrByAnyMethodWithTheColourArrayInForce) {
    usb.addCamera().setIdentity16(10, 2);  // R G / G B
    open();
    const std::uint8_t frame[9] = {10, 20, 11, 30, 40, 31, 12, 22, 13};
    Bytes image(3 * 12, 0xAA);
    // Raw colour: each sample in the channel of its colour, rows padded to 12 bytes.
    ASSERT_EQ(Tavra_ConvertRawToBGR(handle, 3, 3, frame, image.data(), 1, 4), 1);
    EXPECT_EQ(image, (Bytes{0, 0,  10, 0,  20, 0, 0, 0,  11, 0xAA, 0xAA, 0xAA,  //
                            0, 30, 0,  40, 0,  0, 0, 31, 0,  0xAA, 0xAA, 0xAA,  //
                            0, 0,  12, 0,  22, 0, 0, 0,  13, 0xAA, 0xAA, 0xAA}));
    // Cell-centre nearest, which the setter refuses: R 10, G (20 + 30) >> 1, B 40 at the origin.
    ASSERT_EQ(Tavra_ConvertRawToBGR(handle, 3, 3, frame, image.data(), 6, 4), 1);
    EXPECT_EQ((Bytes{image.begin(), image.begin() + 3}), (Bytes{40, 25, 10}));
    EXPECT_EQ(Tavra_ConvertRawToBGR(handle, 3, 3, frame, image.data(), 7, 4), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(Tavra_ConvertRawToBGR(handle, 3, 3, nullptr, image.data(), 1, 4), 0);
    EXPECT_EQ(Tavra_ConvertRawToBGR(handle, 3, 3, frame, nullptr, 1, 4), 0);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(TriggerTest, WordsAreReducedToBytesAndAnUnknownCodeIsToldByTheResultAlone) {
    usb.addCamera();
    open();
    const std::uint8_t words[4] = {0xFF, 0x03, 0x04, 0x00};  // 1023 and 4, ten bits
    std::uint8_t bytes[2] = {7, 7};
    const std::uint32_t before = lastError();
    EXPECT_EQ(Tavra_ConvTo8BitsImage(handle, 2, 1, 2, words, bytes), 1);
    EXPECT_EQ(bytes[0], 255);
    EXPECT_EQ(bytes[1], 1);
    for (const std::uint32_t code : {1u, 32u, 1024u, 3u}) {
        bytes[0] = 7;
        EXPECT_EQ(Tavra_ConvTo8BitsImage(handle, 2, 1, code, words, bytes), 0);
        EXPECT_EQ(bytes[0], 7) << code;
    }
    EXPECT_EQ(lastError(), before);
}

TEST_F(TriggerTest, BlueAndRedChangePlacesInPlaceAndBack) {
    usb.addCamera();
    open();
    Bytes image{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(Tavra_ConvertBitmapBGR24ToRGB24(handle, 2, 1, image.data()), 1);
    EXPECT_EQ(image, (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(Tavra_ConvertBitmapBGR24ToRGB24(handle, 2, 1, image.data()), 1);
    EXPECT_EQ(image, (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Tavra_ConvertBitmapBGR24ToRGB24(handle, 2, 0, nullptr), 1);
}

}  // namespace
}  // namespace tavra::test
