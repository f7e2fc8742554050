// The recorder between the thread that hands frames in and the writer's.
#include "media/movie/create_avi.h"

#include <thread>

#include "media/movie/recorder_support.h"
#include "stages/factory.h"
#include "support/failing_allocations.h"
#include "support/message_receiver.h"

namespace tavra::test {
namespace {

constexpr std::uint64_t kReserve = 52428800;  // left for others
constexpr std::uint16_t kTestFormat = 1;
constexpr std::uint16_t kSmf = 10;
constexpr std::uint32_t kPatienceMs = 20000;

class CreateAvi : public testing::Test {
  protected:
    ~CreateAvi() override { freeMemoryOfTest = std::uint64_t{1} << 40; }

    // A recording of 8-bit images of 8 x 4, not yet started.
    void prepare(std::uint32_t framesPerFile = 1000) {
        ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
        ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
    }
    void start(std::uint32_t framesPerFile = 1000) {
        prepare(framesPerFile);
        ASSERT_EQ(recorder->Start(), 0u);
    }
    // Frames that are taken while the writer stands still.
    std::uint32_t framesThatFit() {
        recorder->dropsFrames = true;
        log.gate.reset();
        std::uint32_t ended = 0, taken = 0;
        while (recorder->WriteFrame(image.data(), taken, 0, &ended) == 0) ++taken;
        EXPECT_EQ(recorder->WriteFrame(image.data(), taken, 0, &ended), 258u);
        log.gate.set();
        return taken;
    }

    MovieFilesDouble files;
    LayoutLog log;
    Recorder recorder{files};
    const Bytes image = pattern(32);
};

TEST_F(CreateAvi, ComesFromTheFactoryUnderItsCode) {
    ISUnknown* const object = CreateStageObject(144);
    ASSERT_NE(object, nullptr);
    auto* const made = static_cast<movie::ISaveAVIFile*>(object);
    std::uint8_t status = 9;
    std::uint32_t buffers = 0;
    EXPECT_EQ(made->GetStatus(&status), 0u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(made->GetBufferCount(&buffers), 0u);
    EXPECT_EQ(buffers, 10u);
    EXPECT_EQ(made->AddRef(), 2u);
    EXPECT_EQ(made->Release(), 1u);
    EXPECT_EQ(made->Release(), 0u);
}

TEST_F(CreateAvi, KnowsNothingBeforeAFormatIsChosen) {
    std::uint32_t number = 0;
    std::uint64_t size = 0;
    EXPECT_EQ(recorder->SetFramesPerFile(1), 6u);
    EXPECT_EQ(recorder->GetFramesPerFile(&number), 6u);
    EXPECT_EQ(recorder->SetQuality(1), 6u);
    EXPECT_EQ(recorder->SetRate(1), 6u);
    EXPECT_EQ(recorder->SetScale(1), 6u);
    EXPECT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 6u);
    EXPECT_EQ(recorder->AddFile(u"movie"), 6u);
    EXPECT_EQ(recorder->Start(), 6u);
    EXPECT_EQ(recorder->WriteFrame(image.data(), 0, 0, &number), 6u);
    EXPECT_EQ(recorder->GetFileSizeEstimate(1, 1, &size), 6u);
    EXPECT_EQ(files.createCount(), 0u);
}

TEST_F(CreateAvi, HasNoWriterForAnUnknownFormat) {
    movie::CCreateAVI* const plain = new movie::CCreateAVI;
    plain->AddRef();
    for (const std::uint16_t format : {0, 3, 9, 11, 0xFFFF}) EXPECT_EQ(plain->SetFileFormat(format, 0), 87u);
    plain->Release();
}

TEST_F(CreateAvi, TellsThatThereIsNoMemoryForAWriter) {
    {
        const FailAllocationsFrom none(1);
        if (recorder->SetFileFormat(kSmf, 0) != 8) std::abort();
    }
    EXPECT_EQ(recorder->Start(), 6u);
}

TEST_F(CreateAvi, RefusesChangesWhileActive) {
    start();
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 12u);
    EXPECT_EQ(recorder->SetFramesPerFile(1), 12u);
    EXPECT_EQ(recorder->SetReserved(1), 12u);
    EXPECT_EQ(recorder->SetQuality(1), 12u);
    EXPECT_EQ(recorder->SetRate(1), 12u);
    EXPECT_EQ(recorder->SetScale(1), 12u);
    EXPECT_EQ(recorder->Start(), 12u);
    EXPECT_EQ(recorder->SetBufferCount(3), 0u) << "for the next start";
    std::uint32_t frames = 0;
    EXPECT_EQ(recorder->GetFramesPerFile(&frames), 0u);
    EXPECT_EQ(frames, 1000u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 0u);
    EXPECT_EQ(recorder->SetReserved(1), 0u);
    EXPECT_EQ(recorder->SetQuality(1), 0u);
}

TEST_F(CreateAvi, HandsItsSettingsToTheWriter) {
    prepare(77);
    EXPECT_EQ(recorder->SetQuality(33), 0u);
    EXPECT_EQ(recorder->SetRate(24000000), 0u);
    EXPECT_EQ(recorder->SetScale(800000), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.settings.framesPerFile, 77u);
    EXPECT_EQ(log.settings.quality, 33u);
    EXPECT_EQ(log.settings.rate, 24000000u);
    EXPECT_EQ(log.settings.scale, 800000u);
    EXPECT_EQ(log.settings.imageBytes, 32u);
    EXPECT_EQ(log.settings.rowStride, 8u);
    EXPECT_EQ(log.settings.image.width, 8);
    EXPECT_EQ(log.settings.image.height, 4);
    EXPECT_EQ(log.settings.image.bitCount, 8u);
    EXPECT_EQ(log.settings.image.imageSize, 32u);
    EXPECT_EQ(log.settings.image.colorsUsed, 256u);
    EXPECT_EQ(log.settings.image.palette[200], 0x00C8C8C8u);
}

TEST_F(CreateAvi, CountsFramesPerFileZeroAsOne) {
    prepare(0);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    EXPECT_EQ(log.frames().size(), 1u);
}

TEST_F(CreateAvi, EstimatesTheSizeOfAFile) {
    std::uint64_t size = 0;
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    ASSERT_EQ(recorder->GetFileSizeEstimate(1000000, 5000, &size), 0u);
    EXPECT_EQ(size, 5000120000u + 4128u);
}

TEST_F(CreateAvi, LeavesTheBlockAloneWhereAFormatHasNoMovieHeader) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    Bytes block(376, 0xEE);
    EXPECT_EQ(recorder->GetMovieHeader(block.data()), 1u);
    EXPECT_EQ(recorder->SetMovieHeader(block.data()), 1u);
    EXPECT_EQ(block, Bytes(376, 0xEE));
}

// ---- pixel formats

TEST_F(CreateAvi, TakesTheFormatsOfItsTable) {
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

TEST_F(CreateAvi, KeepsTheBytesOfRawFramesInTheirOrder) {
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

TEST_F(CreateAvi, RefusesOtherFormats) {
    ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
    for (const std::uint32_t code : {0u, 1u, 0x01080002u, 0x01080007u, 0x0108000Cu, 0x02180013u, 0x02180016u,
                                     0x02200015u, 0x02200018u, 0xFFFFFFFFu}) {
        EXPECT_EQ(recorder->SetImageFormatEx(8, 4, 0, code), 87u) << code;
    }
    for (const std::uint32_t format : {0u, 2u, 3u, 5u, 16u, 256u}) {
        EXPECT_EQ(recorder->SetImageFormat(8, 4, 0, format), 87u) << format;
    }
}

TEST_F(CreateAvi, RefusesImagesThatNobodyCanHave) {
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

TEST_F(CreateAvi, CopiesEveryPixelToItsPlace) {
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

TEST_F(CreateAvi, DividesAWidthOf1000ByFour) {
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

// ---- buffers

TEST_F(CreateAvi, MakesAsManyBuffersAsAskedFor) {
    EXPECT_EQ(recorder->SetBufferCount(4), 0u);
    start();
    EXPECT_EQ(framesThatFit(), 4u);
}

TEST_F(CreateAvi, StopsWhenFiftyMebibytesAreLeft) {
    struct Case {
        std::uint64_t free;
        std::uint32_t buffers;
    };
    // Frames of 32 bytes. The limit is looked at behind each buffer: more than it, and that was the last.
    for (const Case& c : {Case{0, 1},
                          {kReserve - 1, 1},
                          {kReserve, 1},
                          {kReserve + 31, 1},
                          {kReserve + 32, 2},
                          {kReserve + 63, 2},
                          {kReserve + 64, 3},
                          {kReserve + 1000, 10}}) {
        SCOPED_TRACE(c.free);
        freeMemoryOfTest = c.free;
        LayoutLog own;
        MovieFilesDouble place;
        Recorder one(place);
        ASSERT_EQ(one->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(one->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(one->AddFile(u"movie"), 0u);
        ASSERT_EQ(one->Start(), 0u);
        own.gate.reset();
        one->dropsFrames = true;
        std::uint32_t ended = 0, taken = 0;
        while (one->WriteFrame(image.data(), taken, 0, &ended) == 0) ++taken;
        EXPECT_EQ(taken, c.buffers);
        own.gate.set();
    }
}

TEST_F(CreateAvi, DoesNotStartWithoutABuffer) {
    prepare();
    EXPECT_EQ(recorder->SetBufferCount(0), 0u);
    EXPECT_EQ(recorder->Start(), 8u);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(recorder->SetBufferCount(1), 0u);
    EXPECT_EQ(recorder->Start(), 0u) << "the file is still there";
}

TEST_F(CreateAvi, AllocatesNothingForAFrame) {
    EXPECT_EQ(recorder->SetBufferCount(2), 0u);
    start();
    {
        const FailAllocationsFrom none(1);
        std::uint32_t ended = 0;
        for (std::uint32_t number = 0; number < 20; ++number) {
            if (recorder->WriteFrame(image.data(), number, 0, &ended) != 0 || ended != 0) std::abort();
        }
        if (FailAllocationsFrom::failures() != 0) std::abort();
    }
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(log.frames().size(), 20u);
}

TEST_F(CreateAvi, WaitsForABufferAndLosesNothing) {
    EXPECT_EQ(recorder->SetBufferCount(2), 0u);
    start();
    log.gate.reset();
    std::thread camera([&] {
        for (std::uint32_t number = 0; number < 300; ++number) recorder.write(image, number);
    });
    EXPECT_TRUE(log.stopped.wait(kPatienceMs));
    EXPECT_EQ(log.frames().size(), 1u) << "the writer stands in its first frame";
    log.gate.set();
    camera.join();
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 300u);
    for (std::uint32_t i = 0; i < 300; ++i) EXPECT_EQ(frames[i].index, i);
}

TEST_F(CreateAvi, WritesWhatIsInTheQueueBeforeItStops) {
    start();
    log.gate.reset();
    for (std::uint32_t number = 0; number < 10; ++number) recorder.write(image, number);
    EXPECT_TRUE(log.stopped.wait(kPatienceMs));
    log.gate.set();
    recorder.release();
    EXPECT_EQ(log.frames().size(), 10u);
    EXPECT_EQ(files.openFiles(), 0u);
}

// ---- numbers

TEST_F(CreateAvi, CountsFromTheFirstFrameAndLeavesGaps) {
    start();
    recorder.write(image, 0xFFFFFFFE, 2);
    EXPECT_EQ(recorder.position(), 0u);
    recorder.write(image, 0xFFFFFFFF, 3);
    recorder.write(image, 4, 5);
    EXPECT_EQ(recorder.position(), 6u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    const auto frames = log.frames();
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0], (LayoutLog::Frame{0, 2, image}));
    EXPECT_EQ(frames[1], (LayoutLog::Frame{1, 3, image}));
    EXPECT_EQ(frames[2], (LayoutLog::Frame{6, 5, image}));
}

TEST_F(CreateAvi, EndsAtTheNumberOfFramesAndSaysSoWithTheNextFrame) {
    start(3);
    for (std::uint32_t number = 10; number < 13; ++number) recorder.write(image, number);
    recorder.writeUntilEnded(image, 13);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(log.frames().size(), 3u);
    EXPECT_EQ(files.openFiles(), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 99, 0, &ended), 0u);
    EXPECT_EQ(ended, 1u) << "it stays so";
}

TEST_F(CreateAvi, GoesOnInTheNextFileOfTheQueue) {
    prepare(2);
    EXPECT_EQ(recorder->AddFile(u"second"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(image, 0);
    recorder.write(image, 1);
    recorder.write(image, 2);
    recorder.write(image, 3);
    recorder.writeUntilEnded(image, 4);
    std::vector<std::uint32_t> indices;
    for (const auto& frame : log.frames()) indices.push_back(frame.index);
    EXPECT_EQ(indices, (std::vector<std::uint32_t>{0, 1, 0, 1}));
}

TEST_F(CreateAvi, CanBeStartedAgain) {
    start(2);
    recorder.write(image, 0);
    recorder.write(image, 1);
    recorder.writeUntilEnded(image, 2);
    EXPECT_EQ(recorder->AddFile(u"again"), 0u);
    EXPECT_EQ(recorder->Start(), 0u);
    recorder.write(image, 70);
    EXPECT_EQ(recorder.position(), 0u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    ASSERT_EQ(log.frames().size(), 3u);
    EXPECT_EQ(log.frames()[2].index, 0u);
}

// ---- status

TEST_F(CreateAvi, TakesNoPauseWhileItRecords) {
    start();
    EXPECT_EQ(recorder.status(), 1u);
    EXPECT_EQ(recorder->SetStatus(2), 12u);
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder.status(), 1u);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
}

TEST_F(CreateAvi, CanBePausedWhileIdleOnly) {
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder->SetStatus(3), 87u);
    EXPECT_EQ(recorder->SetStatus(2), 0u);
    EXPECT_EQ(recorder.status(), 2u);
    EXPECT_EQ(recorder->SetStatus(2), 12u);
    EXPECT_EQ(recorder->SetStatus(1), 12u);
    EXPECT_EQ(recorder->SetFrameSizeShift(1), 12u) << "a pause is active";
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
}

TEST_F(CreateAvi, CountsPausedFramesAndTakesThemOffThePosition) {
    start(1);
    recorder.write(image, 100);
    recorder.writeUntilEnded(image, 101);
    ASSERT_EQ(recorder->SetStatus(2), 0u);
    for (std::uint32_t number = 110; number < 113; ++number) recorder.write(image, number);
    ASSERT_EQ(recorder->SetStatus(0), 0u);
    std::uint32_t ended = 0;
    EXPECT_EQ(recorder->WriteFrame(image.data(), 113, 0, &ended), 0u);
    EXPECT_EQ(ended, 1u);
    EXPECT_EQ(recorder.position(), 10u) << "113 - 3 - 100";
    EXPECT_EQ(log.frames().size(), 1u);
}

// ---- messages

TEST_F(CreateAvi, PostsBeginAndEndWithItsParameter) {
    MessageReceiver receiver;
    EXPECT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
    EXPECT_EQ(recorder->SetNotifyParam(0x1234), 0u);
    start(1);
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45064u);
    EXPECT_EQ(got.parameter1, 0x1234u);
    EXPECT_EQ(got.parameter2, 0u);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45065u);
    EXPECT_EQ(got.parameter1, 0x1234u);
    EXPECT_EQ(got.parameter2, 0u);
    EXPECT_FALSE(receiver.wait(got, 0));
}

TEST_F(CreateAvi, RecordsForAReceiverThatIsGone) {
    MessageReceiver receiver;
    EXPECT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
    receiver.destroy();
    EXPECT_EQ(recorder->OnStatus(45064, 0).code(), 1400u);
    start(1);
    recorder.write(image, 0);
    recorder.writeUntilEnded(image, 1);
    EXPECT_EQ(recorder.status(), 0u);
}

// ---- faults, with the one layout that writes its frames as they are

TEST_F(CreateAvi, TellsAWriteErrorWithTheNextFrameAndByMessage) {
    // Two writes a frame behind the header.
    for (std::size_t nth = 1; nth <= 9; ++nth) {
        SCOPED_TRACE(nth);
        MessageReceiver receiver;
        MovieFilesDouble place;
        place.failWrite(nth, 1117);
        Recorder one(place);
        ASSERT_EQ(one->SetFileFormat(kSmf, 0), 0u);
        ASSERT_EQ(one->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(one->AddFile(u"movie.smf"), 0u);
        ASSERT_EQ(one->SetNotifyWindow(receiver.window()), 0u);
        ASSERT_EQ(one->Start(), 0u);
        EXPECT_GE(one.writeUntilEnded(image, 0), nth / 2);
        ReceivedMessage got;
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        EXPECT_EQ(got.message, 45064u);
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        EXPECT_EQ(got.message, 45065u);
        EXPECT_EQ(got.parameter2, 1117u);
        EXPECT_EQ(one->SetStatus(0), 1117u);
        EXPECT_EQ(place.openFiles(), 0u);
    }
}

TEST_F(CreateAvi, EndsWhenTheDiskIsFull) {
    files.setRoom(376 + 3 * (24 + 32) + 10);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    EXPECT_GE(recorder.writeUntilEnded(image, 0), 3u);
    EXPECT_EQ(recorder->SetStatus(0), 112u);
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_F(CreateAvi, StopsInFrontOfAFullDisk) {
    // Room for three frames: the file is full when another would no longer fit.
    files.free.value = 376 + 3 * (24 + 32);
    files.existing = {0, 2};
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
    ASSERT_EQ(recorder->AddFile(u"movie.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.writeUntilEnded(image, 0);
    EXPECT_EQ(recorder->SetStatus(0), 0u);
    EXPECT_EQ(files.size(u"movie.smf"), 376u + 3 * 56);
}

TEST_F(CreateAvi, CannotOpenAFileInAPlaceThatRefuses) {
    files.failCreate(1, 5);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    EXPECT_EQ(recorder->AddFile(u"movie.smf"), 0xE0000009u);
    EXPECT_EQ(recorder->AddFile(u"movie.smf"), 0u);
}

TEST_F(CreateAvi, AnotherFormatEndsTheRecording) {
    start();
    recorder.write(image, 0);
    EXPECT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    EXPECT_EQ(recorder.status(), 0u);
    EXPECT_EQ(files.openFiles(), 0u);
}

}  // namespace
}  // namespace tavra::test
