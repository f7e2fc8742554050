// Developing SMF movies: what reaches the AVI's writer, frame by frame.
#include "media/movie/smf_converter.h"

#include <limits>

#include "media/movie/recorder_support.h"
#include "media/movie/smf_builder.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using movie::CReadSMF;
using movie::SmfConversion;

constexpr std::int32_t kRecorderCode = 144;

MovieFilesDouble* place = nullptr;
std::int32_t missingStage = 0;
std::uint64_t freeForConversion = 0;

// The factory, with a recorder of the test's.
ISUnknown* makeStage(std::int32_t code) {
    if (code == missingStage) return nullptr;
    if (code != kRecorderCode) return CreateStageObject(code);
    auto* const recorder = new movie::CCreateAVI({place, [] { return freeMemoryOfTest; }, &TestLayout::make});
    recorder->AddRef();
    return recorder;
}

constexpr movie::SmfSurroundings kSurroundings{makeStage, [] { return freeForConversion; }};

struct Progress {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> calls;
    std::uint32_t stopAt = std::numeric_limits<std::uint32_t>::max();

    static TavraBool call(std::uint32_t frame, std::uint32_t count, void* context) {
        auto& self = *static_cast<Progress*>(context);
        self.calls.emplace_back(frame, count);
        return frame != self.stopAt;
    }
};

class SmfConverter : public testing::Test {
  protected:
    SmfConverter() {
        place = &files;
        missingStage = 0;
        freeForConversion = std::uint64_t{1} << 40;
        order.fileName = u"out.avi";
    }

    std::uint32_t convert(const SmfBuilder& builder) {
        builder.write(folder / "a.smf");
        CReadSMF movie;
        EXPECT_TRUE(movie.open(wideName(folder / "a.smf")).ok());
        const Status result = movie::convertSmf(movie, order, kSurroundings);
        EXPECT_EQ(files.openFiles(), 0u);
        return result.code();
    }
    Bytes image(std::size_t index) const { return log.frames().at(index).image; }

    // Grey, 4 x 2, so many frames of their own number in each pixel.
    static SmfBuilder counting(std::uint32_t frames) {
        SmfBuilder builder(4, 2, 8);
        for (std::uint32_t i = 0; i < frames; ++i) {
            builder.addFrame(i, 1, Bytes(8, static_cast<std::uint8_t>(i)));
        }
        return builder;
    }

    const TempFolder folder;
    MovieFilesDouble files;
    LayoutLog log;
    SmfConversion order;
};

TEST_F(SmfConverter, GivesGreyFramesOnWithPaddedRowsAndTheirNumbers) {
    SmfBuilder builder(5, 2, 8);
    builder.addFrame(0, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    builder.addFrame(3, 1, {11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
    EXPECT_EQ(convert(builder), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].index, 0u);
    EXPECT_EQ(frames[1].index, 3u);
    EXPECT_EQ(frames[1].tag, 0u);
    EXPECT_EQ(frames[0].image, (Bytes{1, 2, 3, 4, 5, 0, 0, 0, 6, 7, 8, 9, 10, 0, 0, 0}));
    EXPECT_EQ(frames[1].image, (Bytes{11, 12, 13, 14, 15, 0, 0, 0, 16, 17, 18, 19, 20, 0, 0, 0}));
}

TEST_F(SmfConverter, HandsTheMoviesNumbersOn) {
    SmfBuilder builder = counting(2);
    builder.addFrame(9, 1, Bytes(8));
    builder.put32(24, 48000000);
    builder.put32(28, 1600000);
    builder.put32(40, 0x47504A4D);
    builder.put32(48, 42);
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(log.settings.rate, 48000000u);
    EXPECT_EQ(log.settings.scale, 1600000u);
    EXPECT_EQ(log.settings.quality, 42u);
    EXPECT_EQ(log.settings.framesPerFile, 10u) << "the last number and one";
    EXPECT_EQ(log.format, 1u);
    EXPECT_EQ(log.compressor, 0x47504A4Du);
    EXPECT_TRUE(files.exists(u"out.avi"));
}

TEST_F(SmfConverter, LimitsALyingQuality) {
    SmfBuilder builder = counting(1);
    builder.put32(48, 0xFFFFFFFF);
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(log.settings.quality, 100u);
}

// Method 1 leaves each sample in the channel of its colour, so that the mosaic shows.
TEST_F(SmfConverter, DevelopsEachFrameWithItsOwnColorArray) {
    SmfBuilder builder(2, 2, 24);
    builder.put32(64, 1);
    builder.addFrame(0, 2, {10, 20, 30, 40});  // R G / G B
    builder.addFrame(1, 4, {10, 20, 30, 40});  // G B / R G
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(image(0), (Bytes{0, 0, 10, 0, 20, 0, 0, 0, /**/ 0, 30, 0, 40, 0, 0, 0, 0}));
    EXPECT_EQ(image(1), (Bytes{0, 10, 0, 20, 0, 0, 0, 0, /**/ 0, 0, 30, 0, 40, 0, 0, 0}));
}

TEST_F(SmfConverter, LeavesTheFourthByteOfAPixelOut) {
    SmfBuilder builder(2, 1, 32);
    builder.put32(64, 0);  // grey in all channels
    builder.addFrame(0, 2, {10, 20});
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(log.settings.image.bitCount, 24u);
    EXPECT_EQ(image(0), (Bytes{10, 10, 10, 20, 20, 20, 0, 0}));
}

// The curve turns the grey over, then the matrix takes red away and brightens the others by one. The other
// way round, grey without red would have another luminance.
TEST_F(SmfConverter, AppliesGammaAndThenTheColorMatrix) {
    SmfBuilder builder(2, 1, 24);
    builder.put8(68, 255);  // a table
    for (std::uint32_t i = 0; i < 256; ++i) builder.put8(80 + i, 255 - i);
    builder.put8(340, 255);
    builder.put16(344 + 2 * 5, 100);   // G from G
    builder.put16(344 + 2 * 10, 100);  // B from B
    builder.addFrame(0, 2, {10, 200});
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(image(0), (Bytes{246, 246, 0, 56, 56, 0, 0, 0}));
}

TEST_F(SmfConverter, Sharpens) {
    SmfBuilder builder(3, 3, 8);
    builder.put8(336, 1);
    builder.put8(337, 2);     // coring
    builder.put16(338, 100);  // gain
    builder.addFrame(0, 1, {90, 90, 90, 90, 100, 90, 90, 90, 90});
    builder.put16(374, 0);
    EXPECT_EQ(convert(builder), 0u);
    Bytes developed = image(0);
    EXPECT_EQ(developed[5], 108) << "100, and what it differs from 90 by beyond the coring";
    developed[5] = 90;
    EXPECT_EQ(developed, (Bytes{90, 90, 90, 0, 90, 90, 90, 0, 90, 90, 90, 0}));
}

// The curve makes the frame flat, so that there is nothing to sharpen. The other way round 100 would become
// 108 and then 200.
TEST_F(SmfConverter, SharpensBehindTheCurve) {
    SmfBuilder builder(3, 3, 8);
    builder.put8(68, 255);
    for (std::uint32_t i = 0; i < 256; ++i) builder.put8(80 + i, i == 100 ? 90 : i == 108 ? 200 : i);
    builder.put8(336, 1);
    builder.put8(337, 2);
    builder.put16(338, 100);
    builder.addFrame(0, 1, {90, 90, 90, 90, 100, 90, 90, 90, 90});
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(image(0), (Bytes{90, 90, 90, 0, 90, 90, 90, 0, 90, 90, 90, 0}));
}

TEST_F(SmfConverter, ThinsByTheHeadersShift) {
    SmfBuilder builder(4, 4, 8);
    builder.put32(52, 1);
    builder.addFrame(0, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(image(0), (Bytes{1, 3, 0, 0, 9, 11, 0, 0}));
}

TEST_F(SmfConverter, BeginsWithTheFrameThatIsAskedFor) {
    order.firstFrame = 2;
    std::uint32_t current = 77;
    order.currentFrame = &current;
    EXPECT_EQ(convert(counting(5)), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0].index, 0u);
    EXPECT_EQ(frames[0].image, Bytes(8, 2));
    EXPECT_EQ(current, 4u);
}

TEST_F(SmfConverter, WritesNothingBeyondTheEnd) {
    std::uint32_t current = 77;
    order.currentFrame = &current;
    for (const std::uint32_t first : {3u, 4u, 0xFFFFFFFFu}) {
        order.firstFrame = first;
        EXPECT_EQ(convert(counting(3)), 0u);
    }
    order.firstFrame = 0;
    EXPECT_EQ(convert(counting(0)), 0u) << "a movie without frames";
    EXPECT_TRUE(log.frames().empty());
    EXPECT_EQ(current, 77u);
    EXPECT_TRUE(files.exists(u"out.avi")) << "empty as it is";
}

TEST_F(SmfConverter, TellsEachFrame) {
    Progress progress;
    order.progress = &Progress::call;
    order.context = &progress;
    EXPECT_EQ(convert(counting(3)), 0u);
    EXPECT_EQ(progress.calls, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0, 3}, {1, 3}, {2, 3}}));
}

TEST_F(SmfConverter, StopsWhereTheCallbackSaysSo) {
    Progress progress;
    progress.stopAt = 3;
    std::uint32_t current = 0;
    order.progress = &Progress::call;
    order.context = &progress;
    order.currentFrame = &current;
    EXPECT_EQ(convert(counting(100)), 0u);
    EXPECT_EQ(log.frames().size(), 4u);
    EXPECT_EQ(current, 3u);
    EXPECT_EQ(progress.calls.size(), 4u);
}

TEST_F(SmfConverter, TellsWhyItFailed) {
    files.failCreate(1, 5);
    EXPECT_NE(convert(counting(3)), 0u);
    EXPECT_TRUE(log.frames().empty());

    log.failWith = 112;
    EXPECT_EQ(convert(counting(100)), 112u) << "the disk is full";
}

TEST_F(SmfConverter, NeedsAllItsStages) {
    for (const std::int32_t code : {64, 32, 16, 48, kRecorderCode}) {
        missingStage = code;
        EXPECT_EQ(convert(counting(3)), 8u) << code;
    }
    EXPECT_EQ(files.createCount(), 0u);
}

TEST_F(SmfConverter, SucceedsWithNothingDoneWithoutMemoryForAFrame) {
    SmfBuilder builder(200, 100, 24);
    builder.addFrame(0, 1, Bytes(20000));
    builder.write(folder / "a.smf");
    CReadSMF movie;
    ASSERT_TRUE(movie.open(wideName(folder / "a.smf")).ok());
    for (const std::size_t bytes : {20000u, 60000u}) {
        const FailAllocationsFrom none(bytes);
        EXPECT_TRUE(movie::convertSmf(movie, order, kSurroundings).ok());
        EXPECT_EQ(FailAllocationsFrom::failures(), bytes == 20000 ? 2u : 1u);
    }
    EXPECT_EQ(files.createCount(), 0u);
}

TEST_F(SmfConverter, DevelopsAFrameThatIsThereHoweverLittleMemoryIsFree) {
    for (const std::uint32_t bits : {8u, 24u, 32u}) {
        SmfBuilder builder(5, 3, bits);
        builder.addFrame(0, 2, Bytes(15, 1));
        for (const std::uint64_t free : {0, 1}) {
            freeForConversion = free;
            EXPECT_EQ(convert(builder), 0u);
        }
    }
    EXPECT_EQ(log.frames().size(), 6u);
}

// ---- headers that lie

// 400 bytes a frame and an image, twice, in the file 8 of them: 1200.
TEST_F(SmfConverter, WeighsWhatALyingHeaderAsksForAgainstTheFreeMemoryThatIsKnown) {
    SmfBuilder builder = counting(1);
    builder.put32(8, 40);
    builder.put32(12, 10);
    freeForConversion = 1199;
    EXPECT_EQ(convert(builder), 0u);
    EXPECT_EQ(files.createCount(), 0u) << "success with nothing done";
    for (const std::uint64_t free : {1200, 0}) {
        freeForConversion = free;
        EXPECT_EQ(convert(builder), 0u);
    }
    EXPECT_EQ(log.frames().size(), 2u);
}

TEST_F(SmfConverter, RefusesPicturesThatNobodyCanHave) {
    struct Lie {
        std::uint32_t width, height, bits;
    };
    for (const Lie& lie : {Lie{0, 2, 8},
                           {4, 0, 8},
                           {0xFFFFFFFF, 0xFFFFFFFF, 8},
                           {0x10000, 0x10000, 8},
                           {0x8000, 0xC000, 24},
                           {0x10000, 0x8000, 65535},
                           {0xFFFFFFFF, 1, 24}}) {
        SmfBuilder builder = counting(2);
        builder.put32(8, lie.width);
        builder.put32(12, lie.height);
        builder.put16(22, lie.bits);
        EXPECT_EQ(convert(builder), 13u) << lie.width << 'x' << lie.height;
    }
    EXPECT_EQ(files.createCount(), 0u);
}

TEST_F(SmfConverter, DevelopsFramesThatAreShorterOrLongerThanTheirPicture) {
    for (const auto& [width, height] : {std::pair{400u, 30u}, {1u, 1u}, {8u, 1u}, {3u, 2u}}) {
        SmfBuilder builder = counting(2);  // 8 bytes a frame
        builder.put32(8, width);
        builder.put32(12, height);
        EXPECT_EQ(convert(builder), 0u);
    }
    EXPECT_EQ(log.frames().size(), 8u);
    EXPECT_EQ(image(1)[7], 1) << "what there is";
    EXPECT_EQ(image(1)[8], 0) << "and zeros";
}

TEST_F(SmfConverter, TakesOddDepthsAsGrey) {
    for (const std::uint32_t bits : {0u, 1u, 7u, 9u, 16u, 23u, 25u, 31u, 33u, 1000u}) {
        SCOPED_TRACE(bits);
        SmfBuilder builder(4, 2, bits);
        builder.addFrame(0, 1, {1, 2, 3, 4, 5, 6, 7, 8});
        EXPECT_EQ(convert(builder), 0u);
        Bytes row = log.frames().back().image;
        row.resize(4);
        EXPECT_EQ(row, (Bytes{1, 2, 3, 4}));
    }
}

TEST_F(SmfConverter, RefusesSettingsThatNoStageTakes) {
    const auto with = [](std::size_t offset, std::uint32_t value) {
        SmfBuilder builder = SmfConverter::counting(2);
        builder.put8(offset, value);
        return builder;
    };
    EXPECT_EQ(convert(with(68, 7)), 87u) << "gamma mode";
    EXPECT_EQ(convert(with(340, 7)), 87u) << "matrix mode";
    EXPECT_EQ(convert(with(368, 7)), 87u) << "hue mode";
    EXPECT_EQ(files.createCount(), 0u);

    SmfBuilder bayer(2, 2, 24);
    bayer.addFrame(0, 2, Bytes(4));
    bayer.put32(64, 7);
    EXPECT_EQ(convert(bayer), 87u) << "interpolation method";
    bayer.put32(64, 0x102);
    EXPECT_EQ(convert(bayer), 87u) << "not 2";
    SmfBuilder shift = counting(1);
    shift.put32(52, 0x100);
    EXPECT_EQ(convert(shift), 87u) << "thinned to nothing";
    EXPECT_TRUE(log.frames().empty());
}

TEST_F(SmfConverter, RefusesFramesThatAreNoMosaic) {
    for (const std::uint32_t array : {0u, 6u, 11u, 20u, 0x10002u, 0xFFFFFFFFu}) {
        SmfBuilder builder(4, 2, 24);
        builder.addFrame(0, array, Bytes(8));
        EXPECT_NE(convert(builder), 0u) << array;
    }
    EXPECT_TRUE(log.frames().empty());
}

}  // namespace
}  // namespace tavra::test
