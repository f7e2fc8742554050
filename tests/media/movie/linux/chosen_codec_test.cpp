// A codec that the application's chooser names.
#include <filesystem>
#include <memory>

#include "media/movie/linux/codec_writer_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kCancelled = 0xE000000D;

// The application's chooser, with what it was asked and what it answers.
struct Question {
    int asked = 0;
    std::uint32_t width = 0, height = 0, bits = 0;
    TavraCodecChoice offered{};
    TavraCodecChoice answer{};
    bool cancels = false;

    static TavraBool ask(void* context, std::uint32_t width, std::uint32_t height, std::uint32_t bitCount,
                         TavraCodecChoice* choice) {
        Question& self = *static_cast<Question*>(context);
        ++self.asked;
        self.width = width;
        self.height = height;
        self.bits = bitCount;
        self.offered = *choice;
        *choice = self.answer;
        return self.cancels ? 0 : 1;
    }
};

struct ChosenCodecTest : CodecWriterTest {
    Question question;
    std::unique_ptr<CAVIFile> writer = movie::makeCodecWriter(noFiles);

    ChosenCodecTest() {
        prepare(*writer, 0xFFFFFFFF);
        TavraHost_SetCodecChooser(&Question::ask, &question);
        question.answer = {fourcc("XVID"), 0xFFFFFFFF, 0, 0};
    }
    std::uintmax_t recordedSize(std::uint32_t frames) {
        EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
        for (std::uint32_t i = 0; i < frames; ++i) fill(i, picture.noise(i));
        EXPECT_TRUE(run(*writer).ok());
        return std::filesystem::file_size(folder / "a.avi");
    }
};

TEST_F(ChosenCodecTest, NobodyToAskIsACancel) {
    TavraHost_SetCodecChooser(nullptr, nullptr);
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kCancelled);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(ChosenCodecTest, AUserMayCancelAndIsAskedAgainNextTime) {
    question.cancels = true;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kCancelled);
    EXPECT_TRUE(folder.isEmpty());
    question.cancels = false;
    EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
    EXPECT_EQ(question.asked, 2);
}

TEST_F(ChosenCodecTest, TheFirstFileAsksForAllOfARecording) {
    picture = {34, 18, 8};
    prepare(*writer, 0xFFFFFFFF);
    question.answer.compressor = fourcc("FFV1");
    for (int recording = 1; recording <= 2; ++recording) {
        writer->settings.framesPerFile = 1;
        EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
        EXPECT_TRUE(writer->addFile(name("b.avi")).ok());
        EXPECT_EQ(question.asked, recording);
        fill(0, picture.noise(0));
        fill(1, picture.noise(1));
        EXPECT_TRUE(run(*writer).ok());
        EXPECT_EQ(read("a.avi").fourcc, fourcc("FFV1"));
        EXPECT_EQ(read("b.avi").frames.at(0).pixels, picture.asRead(picture.noise(1)));
    }
    EXPECT_EQ(question.width, 34u);
    EXPECT_EQ(question.height, 18u);
    EXPECT_EQ(question.bits, 8u);
    EXPECT_EQ(question.offered.compressor, 0u);
    EXPECT_EQ(question.offered.quality, 0xFFFFFFFFu);
    EXPECT_EQ(question.offered.keyFrameEvery, 0u);
    EXPECT_EQ(question.offered.dataRate, 0u);
}

TEST_F(ChosenCodecTest, AChosenCodecThatNothingEncodesIsMissing) {
    question.answer.compressor = fourcc("zzzz");
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kMissing);
    question.answer.compressor = 0;
    EXPECT_EQ(writer->addFile(name("a.avi")).code(), kMissing);
}

TEST_F(ChosenCodecTest, TheChosenQualityCountsOrElseTheRecordings) {
    writer->settings.quality = 90;
    const std::uintmax_t ofRecording = recordedSize(3);
    question.answer.quality = 90;
    EXPECT_EQ(recordedSize(3), ofRecording);
    question.answer.quality = 10;
    EXPECT_LT(recordedSize(3), ofRecording);
}

TEST_F(ChosenCodecTest, KeyFramesComeAsOftenAsChosen) {
    question.answer.keyFrameEvery = 4;
    picture = {64, 64, 24};
    prepare(*writer, 0xFFFFFFFF);
    EXPECT_TRUE(writer->addFile(name("a.avi")).ok());
    for (std::uint32_t i = 0; i < 10; ++i) fill(i, picture.smooth(0));
    EXPECT_TRUE(run(*writer).ok());
    std::vector<std::int64_t> keys;
    for (const ReadMovie::Packet& packet : read().packets) {
        if (packet.key) keys.push_back(packet.position);
    }
    EXPECT_EQ(keys, (std::vector<std::int64_t>{0, 4, 8}));
}

TEST_F(ChosenCodecTest, ADataRateTakesThePlaceOfTheQuality) {
    question.answer.dataRate = 20'000;
    const std::uintmax_t low = recordedSize(60);
    question.answer.dataRate = 200'000;
    EXPECT_GT(recordedSize(60), low);
}

}  // namespace
}  // namespace tavra::test
