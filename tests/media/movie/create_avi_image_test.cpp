// Which images the recorder takes, and its one copy of each.
#include "media/movie/create_avi_fixture.h"

namespace tavra::test {
namespace {

class CreateAviImage : public CreateAviTest {};

TEST_F(CreateAviImage, TakesTheFormatsOfItsTable) {
    struct Row {
        std::uint32_t code;
        std::uint32_t bytes;  // of a pixel
        std::uint16_t bits;
        bool swap;
    };
    const Row rows[] = {{0x01080001, 1, 8, false},  {0x01080008, 1, 8, false}, {0x01080009, 1, 8, false},
                        {0x0108000A, 1, 8, false},  {0x0108000B, 1, 8, false}, {0x02180014, 3, 24, true},
                        {0x02180015, 3, 24, false}, {0x02200016, 4, 24, true}, {0x02200017, 4, 24, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.code);
        LayoutLog own;
        MovieFilesDouble place;
        Recorder one(place);
        ASSERT_EQ(one->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(one->SetImageFormatEx(2, 1, 0, row.code), 0u);
        ASSERT_EQ(one->AddFile(u"movie"), 0u);
        ASSERT_EQ(one->Start(), 0u);
        one.write({1, 2, 3, 4, 5, 6, 7, 8}, 0);
        ASSERT_EQ(one->SetStatus(0), 0u);
        EXPECT_EQ(own.settings.image.bitCount, row.bits);
        EXPECT_EQ(own.settings.swapRedBlue, row.swap);
        const Bytes stored = own.frames().at(0).image;
        switch (row.code) {
            case 0x02180014: EXPECT_EQ(stored, (Bytes{3, 2, 1, 6, 5, 4, 7, 8})); break;
            case 0x02180015: EXPECT_EQ(stored, (Bytes{1, 2, 3, 4, 5, 6, 7, 8})); break;
            case 0x02200016: EXPECT_EQ(stored, (Bytes{3, 2, 1, 7, 6, 5, 0, 0})); break;
            case 0x02200017: EXPECT_EQ(stored, (Bytes{1, 2, 3, 5, 6, 7, 0, 0})); break;
            default: EXPECT_EQ(stored, (Bytes{1, 2, 3, 4}));
        }
    }
}

TEST_F(CreateAviImage, KeepsTheBytesOfRawFramesInTheirOrder) {
    for (const std::uint32_t code : {0x02180014u, 0x02200016u}) {
        MovieFilesDouble place;
        Recorder raw(place);
        ASSERT_EQ(raw->SetFileFormat(movie::movie_format::kSmf, 0), 0u);
        ASSERT_EQ(raw->SetImageFormatEx(4, 2, 0, code), 0u);
        ASSERT_EQ(raw->AddFile(u"movie"), 0u);
        ASSERT_EQ(raw->Start(), 0u);
        raw.write({1, 2, 3, 4, 5, 6, 7, 8}, 0);
        ASSERT_EQ(raw->SetStatus(0), 0u);
        const Bytes file = place.bytes(u"movie");
        ASSERT_EQ(file.size(), 376u + 24 + 8);
        EXPECT_EQ(Bytes(file.end() - 8, file.end()), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    }
}

TEST_F(CreateAviImage, RefusesOtherFormats) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    for (const std::uint32_t code : {0u, 1u, 0x01080002u, 0x01080007u, 0x0108000Cu, 0x02180013u, 0x02180016u,
                                     0x02200015u, 0x02200018u, 0xFFFFFFFFu}) {
        EXPECT_EQ(recorder->SetImageFormatEx(8, 4, 0, code), 87u) << code;
    }
    for (const std::uint32_t format : {0u, 2u, 3u, 5u, 16u, 256u}) {
        EXPECT_EQ(recorder->SetImageFormat(8, 4, 0, format), 87u) << format;
    }
}

TEST_F(CreateAviImage, RefusesImagesThatNobodyCanHave) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    EXPECT_EQ(recorder->SetImageFormat(0, 4, 0, 1), 87u);
    EXPECT_EQ(recorder->SetImageFormat(8, 0, 0, 1), 87u);
    EXPECT_EQ(recorder->SetImageFormat(8, 4, 23, 4), 87u) << "rows overlap";
    EXPECT_EQ(recorder->SetImageFormat(8, 4, 24, 4), 0u);
    EXPECT_EQ(recorder->SetImageFormat(0xFFFFFFFF, 0xFFFFFFFF, 0, 1), 8u);
    EXPECT_EQ(recorder->SetImageFormat(0x10000, 0x10000, 0, 1), 8u);
    for (const std::uint8_t shift : {3, 31, 32, 255}) {
        ASSERT_EQ(recorder->SetFrameSizeShift(shift), 0u);
        EXPECT_EQ(recorder->SetImageFormat(7, 7, 0, 1), 87u) << "nothing is left";
    }
}

// ---- the copy

// One pixel after the other, by the rule.
Bytes thinned(const Bytes& source, std::uint32_t width, std::uint32_t height, std::uint32_t stride,
              std::uint32_t pixelBytes, unsigned shift, bool bottomUp) {
    const std::uint32_t step = 1u << shift;
    const std::uint32_t outWidth = width / step, outHeight = height / step;
    const std::uint32_t outBytes = pixelBytes == 1 ? 1 : 3;
    const std::uint32_t outStride = (outWidth * outBytes + 3) / 4 * 4;
    Bytes result(std::size_t{outStride} * outHeight);
    for (std::uint32_t y = 0; y < outHeight; ++y) {
        const std::uint32_t row = bottomUp ? height - 1 - y * step : y * step;
        for (std::uint32_t x = 0; x < outWidth; ++x) {
            for (std::uint32_t i = 0; i < outBytes; ++i) {
                result[std::size_t{y} * outStride + x * outBytes + i] =
                    source[std::size_t{row} * stride + std::size_t{x} * step * pixelBytes + i];
            }
        }
    }
    return result;
}

// Padding is nobody's business.
void clearPadding(Bytes& image, std::size_t rowBytes, std::size_t stride) {
    for (std::size_t i = 0; i < image.size(); ++i) {
        if (i % stride >= rowBytes) image[i] = 0;
    }
}

TEST_F(CreateAviImage, CopiesEveryPixelToItsPlace) {
    for (const std::uint32_t preview : {1u, 4u, 8u}) {
        const std::uint32_t pixelBytes = preview == 1 ? 1 : preview == 4 ? 3 : 4;
        for (const auto& [width, height] : {std::pair{4u, 4u}, {5u, 3u}, {1u, 1u}, {2u, 7u}, {13u, 6u}}) {
            for (const std::uint32_t extra : {0u, 5u}) {
                for (unsigned shift = 0; shift < 3 && width >> shift && height >> shift; ++shift) {
                    for (const bool bottomUp : {false, true}) {
                        SCOPED_TRACE(testing::Message() << preview << ' ' << width << 'x' << height << '+'
                                                        << extra << '>' << shift << bottomUp);
                        const std::uint32_t dense = (width * pixelBytes + 3) / 4 * 4;
                        const std::uint32_t stride = dense + extra;
                        const Bytes source = pattern(std::size_t{stride} * height);
                        LayoutLog own;
                        own.bottomUp = bottomUp;
                        MovieFilesDouble place;
                        Recorder one(place);
                        ASSERT_EQ(one->SetFileFormat(kTestFormat, 0), 0u);
                        ASSERT_EQ(one->SetFrameSizeShift(static_cast<std::uint8_t>(shift)), 0u);
                        ASSERT_EQ(one->SetImageFormat(width, height, extra ? stride : 0, preview), 0u);
                        ASSERT_EQ(one->AddFile(u"movie"), 0u);
                        ASSERT_EQ(one->Start(), 0u);
                        one.write(source, 0);
                        ASSERT_EQ(one->SetStatus(0), 0u);
                        Bytes stored = own.frames().at(0).image;
                        const std::size_t outBytes = pixelBytes == 1 ? 1 : 3;
                        clearPadding(stored, (width >> shift) * outBytes, own.settings.rowStride);
                        EXPECT_EQ(stored,
                                  thinned(source, width, height, stride, pixelBytes, shift, bottomUp));
                        EXPECT_EQ(own.settings.image.width, static_cast<std::int32_t>(width >> shift));
                        EXPECT_EQ(own.settings.image.height, static_cast<std::int32_t>(height >> shift));
                    }
                }
            }
        }
    }
}

TEST_F(CreateAviImage, DividesAWidthOf1000ByFour) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    ASSERT_EQ(recorder->SetFrameSizeShift(2), 0u);
    ASSERT_EQ(recorder->SetImageFormat(1000, 9, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    const Bytes source = pattern(9000);
    recorder.write(source, 0);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.settings.image.width, 250);
    EXPECT_EQ(log.settings.image.height, 2);
    EXPECT_EQ(log.settings.rowStride, 252u);
    const Bytes stored = log.frames().at(0).image;
    EXPECT_EQ(stored[0], source[0]);
    EXPECT_EQ(stored[249], source[996]);
    EXPECT_EQ(stored[252], source[4000]) << "the fifth row";
}

}  // namespace
}  // namespace tavra::test
