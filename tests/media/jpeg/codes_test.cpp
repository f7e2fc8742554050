#include "media/jpeg/codes.h"

#include <gtest/gtest.h>

namespace tavra::test {
namespace {

TEST(JpegCodes, EachResultHasItsText) {
    const struct {
        int code;
        const char* text;
    } rows[] = {{0, "no error"},
                {-1, "requested feature is not implemented"},
                {-2, "internal error"},
                {-3, "wrong parameters"},
                {-4, "buffer too small"},
                {-5, "file io operation failed"},
                {-6, "memory allocation failed"},
                {-7, "bad segment data"},
                {-8, "bad frame segment"},
                {-9, "bad quant table segment"},
                {-10, "bad huffman table segment"},
                {-11, "bad scan segment"},
                {-12, "wrong restart marker"}};
    for (const auto& row : rows) EXPECT_STREQ(jpegErrorText(row.code), row.text);
    for (const int code : {1, -13, 100, -2147483647}) EXPECT_STREQ(jpegErrorText(code), "unknown code");
    EXPECT_STREQ(jpegErrorText(JpegError::FileIo), "file io operation failed");
}

TEST(JpegCodes, NumbersAreThoseOfTheInterface) {
    EXPECT_EQ(static_cast<int>(JpegMode::Baseline), 1);
    EXPECT_EQ(static_cast<int>(JpegMode::Lossless), 4);
    EXPECT_EQ(static_cast<int>(JpegColor::Gray), 1);
    EXPECT_EQ(static_cast<int>(JpegColor::Rgb), 2);
    EXPECT_EQ(static_cast<int>(JpegColor::Bgr), 3);
    EXPECT_EQ(static_cast<int>(JpegColor::YCbCr), 4);
    EXPECT_EQ(static_cast<int>(JpegColor::Cmyk), 5);
    EXPECT_EQ(static_cast<int>(JpegColor::Ycck), 6);
    EXPECT_EQ(static_cast<int>(JpegSampling::Sampling444), 0);
    EXPECT_EQ(static_cast<int>(JpegSampling::Sampling422), 1);
    EXPECT_EQ(static_cast<int>(JpegSampling::Sampling411), 3);
    EXPECT_EQ(static_cast<int>(JpegSampling::Other), 4);
}

}  // namespace
}  // namespace tavra::test
