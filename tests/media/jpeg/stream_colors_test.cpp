// What the header of a stream tells of its colours, marker by marker: also of colours that no pixels can be
// converted to, for which only the channels of the source count.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "media/jpeg/jpeg_support.h"

namespace tavra::test {
namespace {

constexpr std::uint8_t kQuantTable = 0xDB, kFrame = 0xC0, kHuffmanTable = 0xC4, kApp0 = 0xE0, kApp14 = 0xEE;

// The header alone, as there may be no scan behind it.
ByteVector headerOf(unsigned channels, JpegColor source, JpegSampling sourceSampling, JpegColor color,
                    JpegSampling sampling = JpegSampling::Sampling444) {
    const ByteVector pixels(64 * 64, 77);
    CJPEGEncoder encoder;
    LimitedStream stream;
    EXPECT_EQ(encoder.SetSource(pixels.data(), 64, 11, 7, channels, source, sourceSampling), JpegError::None);
    EXPECT_EQ(encoder.SetDestination(&stream), JpegError::None);
    EXPECT_EQ(encoder.SetParams(JpegMode::Baseline, color, sampling, 0, false, 75), JpegError::None);
    EXPECT_EQ(encoder.WriteHeader(), JpegError::None);
    return stream.bytes;
}

ByteVector headerOf(unsigned channels, JpegColor source, JpegColor color,
                    JpegSampling sampling = JpegSampling::Sampling444) {
    return headerOf(channels, source, JpegSampling::Sampling444, color, sampling);
}

// Markers behind the one that begins the image, up to the end of the header.
ByteVector markersOf(const ByteVector& stream) {
    ByteVector markers;
    if (stream.size() < 2 || stream[0] != 0xFF || stream[1] != 0xD8) return markers;
    for (std::size_t i = 2; i < stream.size();) {
        if (i + 4 > stream.size() || stream[i] != 0xFF) {
            ADD_FAILURE() << "no marker at " << i;
            break;
        }
        markers.push_back(stream[i + 1]);
        i += 2 + stream[i + 2] * std::size_t{256} + stream[i + 3];
    }
    return markers;
}

bool isApplicationMarker(std::uint8_t marker) {
    return marker >= 0xE0 && marker <= 0xEF;
}

struct Source {
    unsigned channels;
    JpegColor color;
    JpegSampling sampling = JpegSampling::Sampling444;
};

constexpr Source kSources[] = {
    {1, JpegColor::Gray},    {3, JpegColor::Rgb},     {4, JpegColor::Rgb},
    {3, JpegColor::Bgr},     {4, JpegColor::Bgr},     {2, JpegColor::YCbCr, JpegSampling::Sampling422},
    {1, JpegColor::Unknown}, {2, JpegColor::Unknown}, {3, JpegColor::Unknown},
    {4, JpegColor::Unknown}, {4, JpegColor::Cmyk},    {4, JpegColor::Ycck}};

TEST(StreamColors, AreAsManyAsTheChannelsWhereTheyAreUnknownOrBgr) {
    for (const JpegColor color : {JpegColor::Unknown, JpegColor::Bgr}) {
        for (const Source& source : kSources) {
            SCOPED_TRACE(testing::Message()
                         << source.channels << " channels of " << static_cast<int>(source.color) << " to "
                         << static_cast<int>(color));
            const ByteVector stream = headerOf(source.channels, source.color, source.sampling, color);
            // One table of each kind, and no marker that tells what the colours are.
            EXPECT_EQ(markersOf(stream), (ByteVector{kQuantTable, kFrame, kHuffmanTable, kHuffmanTable}));
            ByteVector wanted = {8, 0, 7, 0, 11, static_cast<std::uint8_t>(source.channels)};
            for (unsigned i = 0; i < source.channels; ++i) {
                wanted.insert(wanted.end(), {static_cast<std::uint8_t>(i), 0x11, 0});
            }
            EXPECT_EQ(segment(stream, kFrame), wanted);
            EXPECT_EQ(segment(stream, kQuantTable).at(0), 0) << "steps of 8 bits, table 0";
            EXPECT_EQ(segment(stream, kHuffmanTable, 0).at(0), 0x00) << "DC";
            EXPECT_EQ(segment(stream, kHuffmanTable, 1).at(0), 0x10) << "AC";
        }
    }
}

// The first and the fourth keep their samples, the others are halved.
TEST(StreamColors, HaveTheirFactorsAlsoWhereTheyAreUnknown) {
    for (const JpegColor color : {JpegColor::Unknown, JpegColor::Bgr}) {
        const ByteVector halved = headerOf(4, JpegColor::Rgb, color, JpegSampling::Sampling422);
        EXPECT_EQ(segment(halved, kFrame),
                  (ByteVector{8, 0, 7, 0, 11, 4, 0, 0x21, 0, 1, 0x11, 0, 2, 0x11, 0, 3, 0x21, 0}));
        const ByteVector quartered = headerOf(4, JpegColor::Rgb, color, JpegSampling::Sampling411);
        EXPECT_EQ(segment(quartered, kFrame),
                  (ByteVector{8, 0, 7, 0, 11, 4, 0, 0x22, 0, 1, 0x11, 0, 2, 0x11, 0, 3, 0x22, 0}));
    }
}

TEST(StreamColors, AreNeverMoreThanFour) {
    const ByteVector pixels(64 * 64);
    CJPEGEncoder encoder;
    EXPECT_EQ(encoder.SetSource(pixels.data(), 64, 8, 8, 5, JpegColor::Unknown, JpegSampling::Sampling444),
              JpegError::WrongParameters);
}

// Whatever the channels are: gray has one, RGB and YCbCr have three, the others four.
TEST(StreamColors, HaveACountAndAMarkerOfTheirOwnWhereTheyAreKnown) {
    const struct {
        JpegColor color;
        unsigned count;
        std::uint8_t marker;
        int transform;  // of marker 14
    } rows[] = {{JpegColor::Gray, 1, kApp0, -1},
                {JpegColor::YCbCr, 3, kApp0, -1},
                {JpegColor::Rgb, 3, kApp14, 0},
                {JpegColor::Cmyk, 4, kApp14, 0},
                {JpegColor::Ycck, 4, kApp14, 2}};
    for (const auto& row : rows) {
        for (const unsigned channels : {1U, 2U, 3U, 4U}) {
            SCOPED_TRACE(testing::Message() << channels << " to " << static_cast<int>(row.color));
            const ByteVector stream = headerOf(channels, JpegColor::Unknown, row.color);
            const ByteVector markers = markersOf(stream);
            ASSERT_FALSE(markers.empty());
            EXPECT_EQ(markers[0], row.marker);
            EXPECT_EQ(std::count_if(markers.begin(), markers.end(), isApplicationMarker), 1);
            EXPECT_EQ(segment(stream, kFrame).at(5), row.count);
            EXPECT_EQ(segment(stream, kFrame).size(), 6 + 3 * row.count);
            const ByteVector application = segment(stream, row.marker);
            EXPECT_EQ(std::string(application.begin(), application.begin() + 4),
                      row.marker == kApp0 ? "JFIF" : "Adob");
            if (row.transform >= 0) {
                EXPECT_EQ(application.back(), row.transform);
            }
        }
    }
}

}  // namespace
}  // namespace tavra::test
