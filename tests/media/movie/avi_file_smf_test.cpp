// What stands in an SMF file, byte for byte.
#include "media/movie/avi_file_smf.h"

#include "media/movie/recorder_support.h"

namespace tavra::test {
namespace {

constexpr std::uint16_t kSmf = 10;

void put16(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    bytes[offset] = static_cast<std::uint8_t>(value);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}
void put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    put16(bytes, offset, value);
    put16(bytes, offset + 2, value >> 16);
}

struct Expected {
    std::uint32_t width, height, bits;
    std::uint32_t framesPerFile = 600, compressor = 0;

    // Rate, scale and quality as the tests below set them.
    Bytes header(const Bytes& settings = Bytes(376)) const {
        Bytes bytes = settings;
        const Bytes magic = {'S', 'M', 'F', 0};
        std::copy(magic.begin(), magic.end(), bytes.begin());
        put32(bytes, 4, 376);
        put32(bytes, 8, width);
        put32(bytes, 12, height);
        put32(bytes, 16, width);
        put16(bytes, 20, 8);
        put16(bytes, 22, bits);
        put32(bytes, 24, 36000000);
        put32(bytes, 28, 1200000);
        put32(bytes, 32, 24);
        put32(bytes, 36, width * height);
        put32(bytes, 40, compressor);
        put32(bytes, 44, framesPerFile);
        put32(bytes, 48, 91);
        put32(bytes, 52, 0);
        return bytes;
    }
};

void append(Bytes& file, std::uint32_t number, std::uint32_t tag, const Bytes& image) {
    Bytes header(24);
    put32(header, 0, number);
    put32(header, 4, tag);
    file.insert(file.end(), header.begin(), header.end());
    file.insert(file.end(), image.begin(), image.end());
}

class SmfWriter : public testing::Test {
  protected:
    void open(std::uint32_t width, std::uint32_t height, std::uint32_t previewFormat,
              std::uint32_t compressor = 0) {
        ASSERT_EQ(recorder->SetFileFormat(kSmf, compressor), 0u);
        ASSERT_EQ(recorder->SetQuality(91), 0u);
        ASSERT_EQ(recorder->SetRate(36000000), 0u);
        ASSERT_EQ(recorder->SetScale(1200000), 0u);
        ASSERT_EQ(recorder->SetImageFormat(width, height, width, previewFormat), 0u);
        ASSERT_EQ(recorder->AddFile(u"a.smf"), 0u);
    }
    Bytes written(const std::u16string& name = u"a.smf") {
        EXPECT_EQ(recorder->SetStatus(0), 0u);
        return files.bytes(name);
    }

    MovieFilesDouble files;
    LayoutLog log;
    Recorder recorder{files};
};

TEST_F(SmfWriter, WritesDenseFramesOfAnyWidthAndPreviewFormat) {
    for (const auto& [preview, bits] : {std::pair{1u, 8u}, {4u, 24u}, {8u, 24u}}) {
        for (const auto& [width, height] : {std::pair{8u, 4u}, {5u, 3u}, {1u, 1u}, {2u, 1u}, {13u, 2u}}) {
            SCOPED_TRACE(testing::Message() << preview << ' ' << width << 'x' << height);
            open(width, height, preview);
            ASSERT_EQ(recorder->Start(), 0u);
            Bytes expected = Expected{width, height, bits}.header();
            for (std::uint32_t i = 0; i < 5; ++i) {
                // Exactly the frame's bytes: a read past it is an error that sanitizers tell.
                const Bytes frame = pattern(std::size_t{width} * height, static_cast<std::uint8_t>(i));
                recorder.write(frame, 70 + i, 2 + i);
                append(expected, i, 2 + i, frame);
            }
            EXPECT_EQ(written(), expected);
        }
    }
}

// Raw rows stand one behind the other, whatever the preview's format; padded ones are told by their stride.
TEST_F(SmfWriter, TakesRowsWithoutPaddingUnlessToldOfSome) {
    for (const std::uint32_t preview : {1u, 4u, 8u}) {
        for (const std::uint32_t stride : {0u, 5u, 6u, 16u}) {
            SCOPED_TRACE(testing::Message() << preview << ' ' << stride);
            open(5, 3, preview);
            ASSERT_EQ(recorder->SetImageFormat(5, 3, stride, preview), 0u);
            ASSERT_EQ(recorder->Start(), 0u);
            const std::uint32_t step = stride == 0 ? 5 : stride;
            const Bytes frame = pattern(2 * step + 5);  // no byte behind the last pixel
            recorder.write(frame, 0, 2);
            Bytes dense;
            for (std::uint32_t y = 0; y < 3; ++y) {
                dense.insert(dense.end(), frame.begin() + y * step, frame.begin() + y * step + 5);
            }
            Bytes expected = Expected{5, 3, preview == 1 ? 8u : 24u}.header();
            append(expected, 0, 2, dense);
            EXPECT_EQ(written(), expected);
        }
    }
    EXPECT_EQ(recorder->SetImageFormat(5, 3, 4, 1), 87u) << "rows that overlap";
}

TEST_F(SmfWriter, NumbersFramesWithTheGapsOfTheCamera) {
    open(4, 2, 1);
    ASSERT_EQ(recorder->Start(), 0u);
    const Bytes frame = pattern(8);
    recorder.write(frame, 100, 2);
    recorder.write(frame, 103, 4);
    recorder.write(frame, 104, 2);
    Bytes expected = Expected{4, 2, 8}.header();
    append(expected, 0, 2, frame);
    append(expected, 3, 4, frame);
    append(expected, 4, 2, frame);
    EXPECT_EQ(written(), expected);
}

TEST_F(SmfWriter, KeepsTheSettingsOfDevelopmentAndFillsInTheRest) {
    open(4, 2, 4, 0x47504A4D);
    ASSERT_EQ(recorder->SetFramesPerFile(9), 0u);
    Bytes settings(376, 0xAA);
    ASSERT_EQ(recorder->SetMovieHeader(settings.data()), 0u);
    Bytes back(376);
    ASSERT_EQ(recorder->GetMovieHeader(back.data()), 0u);
    EXPECT_EQ(back, settings);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.write(pattern(8), 0, 2);
    Bytes expected = Expected{4, 2, 24, 9, 0x47504A4D}.header(settings);
    append(expected, 0, 2, pattern(8));
    EXPECT_EQ(written(), expected);
}

TEST_F(SmfWriter, ThinsTheFrameWhenAsked) {
    ASSERT_EQ(recorder->SetFrameSizeShift(1), 0u);
    open(5, 4, 1);
    ASSERT_EQ(recorder->Start(), 0u);
    const Bytes frame = pattern(20);
    recorder.write(frame, 0, 1);
    Bytes expected = Expected{2, 2, 8}.header();
    append(expected, 0, 1, {frame[0], frame[2], frame[10], frame[12]});
    EXPECT_EQ(written(), expected);
}

TEST_F(SmfWriter, IsAHeaderAloneWithoutFrames) {
    open(4, 2, 1);
    ASSERT_EQ(recorder->Start(), 0u);
    EXPECT_EQ(written(), (Expected{4, 2, 8}.header()));
}

TEST_F(SmfWriter, BeginsEachFileOfTheQueueAnew) {
    open(4, 2, 1);
    ASSERT_EQ(recorder->SetFramesPerFile(2), 0u);
    ASSERT_EQ(recorder->AddFile(u"b.smf"), 0u);
    ASSERT_EQ(recorder->AddFile(u"c.smf"), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    const Bytes frame = pattern(8);
    for (std::uint32_t i = 0; i < 3; ++i) recorder.write(frame, i, 1);
    Bytes first = Expected{4, 2, 8, 2}.header(), second = first;
    append(first, 0, 1, frame);
    append(first, 1, 1, frame);
    append(second, 0, 1, frame);
    EXPECT_EQ(written(), first);
    EXPECT_EQ(files.bytes(u"b.smf"), second);
    EXPECT_TRUE(files.bytes(u"c.smf").empty()) << "opened, and not begun";
    EXPECT_EQ(files.openFiles(), 1u);
    recorder.release();
    EXPECT_EQ(files.openFiles(), 0u);
}

TEST_F(SmfWriter, EndsWithTheCodeOfAWriteThatFails) {
    // The header, then two writes a frame.
    for (std::size_t nth = 1; nth <= 5; ++nth) {
        SCOPED_TRACE(nth);
        MovieFilesDouble place;
        place.failWrite(nth, 29);
        Recorder failing(place);
        ASSERT_EQ(failing->SetFileFormat(kSmf, 0), 0u);
        ASSERT_EQ(failing->SetImageFormat(4, 2, 4, 1), 0u);
        ASSERT_EQ(failing->AddFile(u"a.smf"), 0u);
        ASSERT_EQ(failing->Start(), 0u);
        failing.writeUntilEnded(pattern(8), 0);
        EXPECT_EQ(failing->SetStatus(0), 29u);
        EXPECT_EQ(place.openFiles(), 0u);
        constexpr std::size_t kPieces[] = {0, 376, 24, 8, 24};
        std::size_t written = 0;
        for (std::size_t i = 0; i < nth; ++i) written += kPieces[i];
        EXPECT_EQ(place.size(u"a.smf"), written) << "what was written by then stays";
    }
}

TEST_F(SmfWriter, CannotBeginWhereNoFileCanBeMade) {
    files.failCreate(1, 5);
    ASSERT_EQ(recorder->SetFileFormat(kSmf, 0), 0u);
    ASSERT_EQ(recorder->SetImageFormat(4, 2, 4, 1), 0u);
    EXPECT_EQ(recorder->AddFile(u"a.smf"), 0xE0000009u);
    EXPECT_EQ(recorder->AddFile(u"a.smf"), 0u);
}

TEST_F(SmfWriter, MeasuresTheVolumeBeforeTheFileIsMade) {
    // What is to be replaced counts as free.
    files.put(u"a.smf", Bytes(200));
    files.free.value = 376 + 2 * (24 + 8) - 200;
    open(4, 2, 1);
    ASSERT_EQ(recorder->Start(), 0u);
    recorder.writeUntilEnded(pattern(8), 0);
    EXPECT_EQ(written().size(), 376u + 2 * 32);
}

TEST_F(SmfWriter, KnowsTheLimitsOfVolumes) {
    struct Volume {
        platform::VolumeKind kind;
        std::uint32_t error;
        std::uint64_t limit;
    };
    for (const Volume& volume : {Volume{platform::VolumeKind::Large, 0, 0x10000000000},
                                 {platform::VolumeKind::Fat32, 0, 0x100000000},
                                 {platform::VolumeKind::Unknown, 0, 0x80000000},
                                 {platform::VolumeKind::Fat32, 5, 0x10000000000}}) {
        MovieFilesDouble place;
        place.kind = {volume.kind, volume.error};
        movie::CAVIFileSMF writer(place, 0);
        std::unique_ptr<movie::FileRecord> record;
        for (int i = 0; i < 2; ++i) {  // each file is measured by itself
            ASSERT_TRUE(writer.OpenFile(u"a.smf", record).ok());
            EXPECT_EQ(writer.GetMaxFileSize(), volume.limit);
            record.reset();
        }
    }
}

}  // namespace
}  // namespace tavra::test
