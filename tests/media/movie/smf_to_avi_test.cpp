// From an SMF file to an AVI file through the exported functions: what stands in the AVI, byte for byte.
#include <gtest/gtest.h>

#include "media/movie/avi_layouts.h"
#include "media/movie/smf_builder.h"
#include "platform/last_error.h"
#include "support/temp_folder.h"
#include "tavra/tavra_api.h"

namespace tavra::test {
namespace {

using Numbers = std::vector<std::uint32_t>;

struct CloseReader {
    void operator()(TavraSmfHandle reader) const { Tavra_SMFCloseFile(reader); }
};
using Reader = std::unique_ptr<std::remove_pointer_t<TavraSmfHandle>, CloseReader>;

class SmfToAvi : public ::testing::Test {
  protected:
    static constexpr MovieForm kForm{.width = 4, .height = 2, .bits = 8};

    // Two rows of a raw frame.
    static FileBytes rawFrame(std::uint32_t frame) {
        FileBytes raw(8);
        for (std::uint32_t i = 0; i < 8; ++i) raw[i] = static_cast<std::uint8_t>(16 * frame + i);
        return raw;
    }
    static FileBytes bottomUp(const FileBytes& raw) {
        FileBytes rows(raw.begin() + 4, raw.end());
        rows.insert(rows.end(), raw.begin(), raw.begin() + 4);
        return rows;
    }
    // Grey frames that call themselves so.
    static SmfBuilder movieOf(const Numbers& numbers) {
        SmfBuilder builder(4, 2, 8);
        for (std::uint32_t i = 0; i < numbers.size(); ++i) builder.addFrame(numbers[i], 1, rawFrame(i));
        return builder;
    }
    // The AVI with these frames of the SMF, at these places.
    static FileBytes aviOf(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& frameAndIndex) {
        std::vector<MovieFrame> frames;
        for (const auto& [frame, index] : frameAndIndex) frames.push_back({index, bottomUp(rawFrame(frame))});
        return buildAvi10NotCompressed(kForm, frames);
    }

    Reader open(const FileBytes& smf) {
        SmfBuilder::write(folder / "a.smf", smf);
        Reader reader(Tavra_SMFOpenFileW(wideName(folder / "a.smf").c_str()));
        EXPECT_NE(reader, nullptr);
        return reader;
    }
    void convert(const Reader& reader, std::uint32_t firstFrame = 0, std::uint32_t* current = nullptr,
                 TavraSmfProgressCallback progress = nullptr, void* context = nullptr) {
        EXPECT_EQ(Tavra_SMF2AVIW(reader.get(), wideName(avi).c_str(), firstFrame, current, progress, context),
                  1);
    }
    FileBytes converted(const SmfBuilder& smf, std::uint32_t firstFrame = 0) {
        convert(open(smf.bytes()), firstFrame);
        return readFile(avi);
    }

    const TempFolder folder;
    const std::filesystem::path avi = folder / "out.avi";
};

TEST_F(SmfToAvi, MakesTheSameOfANarrowName) {
    const Reader reader = open(movieOf({0, 1, 2}).bytes());
    std::uint32_t current = 99;
    ASSERT_EQ(Tavra_SMF2AVIA(reader.get(), avi.string().c_str(), 0, &current, nullptr, nullptr), 1);
    EXPECT_EQ(current, 2u);
    EXPECT_TRUE(equalFiles(readFile(avi), aviOf({{0, 0}, {1, 1}, {2, 2}})));
    std::filesystem::remove(avi);
    convert(reader);
    EXPECT_TRUE(equalFiles(readFile(avi), aviOf({{0, 0}, {1, 1}, {2, 2}})));
}

TEST_F(SmfToAvi, ACallbackThatSaysStopAtFrameThreeLeavesAWholeMovieOfFour) {
    const Reader reader = open(movieOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}).bytes());
    Numbers told;
    const auto stopAtThree = [](std::uint32_t frame, std::uint32_t count, void* context) -> TavraBool {
        EXPECT_EQ(count, 10u);
        static_cast<Numbers*>(context)->push_back(frame);
        return frame < 3;
    };
    std::uint32_t current = 99;
    convert(reader, 0, &current, stopAtThree, &told);
    EXPECT_EQ(told, (Numbers{0, 1, 2, 3}));
    EXPECT_EQ(current, 3u);
    EXPECT_TRUE(equalFiles(readFile(avi), aviOf({{0, 0}, {1, 1}, {2, 2}, {3, 3}})));
}

TEST_F(SmfToAvi, BeginsWithAnyFrameAndBeyondTheLastMakesAMovieWithout) {
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 1, 2, 3}), 2), aviOf({{2, 0}, {3, 1}})));
    for (const std::uint32_t first : {4u, 5u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(equalFiles(converted(movieOf({0, 1, 2, 3}), first), aviOf({}))) << first;
    }
    EXPECT_TRUE(equalFiles(converted(movieOf({})), aviOf({}))) << "an SMF of a header alone";
}

TEST_F(SmfToAvi, NumbersThatJumpLeaveEmptyPlaces) {
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 1, 7})), aviOf({{0, 0}, {1, 1}, {2, 7}})));
    EXPECT_TRUE(equalFiles(converted(movieOf({100, 103})), aviOf({{0, 0}, {1, 3}})))
        << "counted from the first";
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 3, 9}), 1), aviOf({{1, 0}, {2, 6}})));
}

TEST_F(SmfToAvi, NumbersThatStandStillAreTheNext) {
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 0, 1})), aviOf({{0, 0}, {1, 1}, {2, 2}})));
}

// The last number and one is all that a movie holds; a number ahead of the first is as large as can be.
TEST_F(SmfToAvi, NumbersThatFallEndTheMovieWhereTheyPassTheLast) {
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 2, 1})), aviOf({{0, 0}})));
    EXPECT_TRUE(equalFiles(converted(movieOf({5, 6, 4})), aviOf({{0, 0}, {1, 1}})));
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 4, 2, 5})), aviOf({{0, 0}, {1, 4}, {2, 5}, {3, 6}})));
    EXPECT_TRUE(equalFiles(converted(movieOf({0, 1, 0xFFFFFFFF})), aviOf({{0, 0}}))) << "none counts as one";
}

TEST_F(SmfToAvi, OfAFileThatWasCutAsFarAsWholeFramesReach) {
    const FileBytes whole = movieOf({0, 1, 2}).bytes();
    for (const std::size_t size : {376u, 407u, 408u, 439u, 440u, 441u, 472u}) {
        ASSERT_LE(size, whole.size());
        convert(open(FileBytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
        std::vector<std::pair<std::uint32_t, std::uint32_t>> frames;
        for (std::uint32_t i = 0; i < (size - 376) / 32; ++i) frames.emplace_back(i, i);
        EXPECT_TRUE(equalFiles(readFile(avi), aviOf(frames))) << size;
    }
}

TEST_F(SmfToAvi, TheCompressorThatWasSetTakesEffectAndTheSourceStays) {
    const FileBytes smf = movieOf({0, 1, 4}).bytes();
    const Reader reader = open(smf);
    ASSERT_EQ(Tavra_SetSMFCompressor(reader.get(), TAVRA_AVI_COMPRESSOR_MJPG, 30), 1);
    convert(reader);
    MovieForm form = kForm;
    form.quality = 30;
    std::vector<MovieFrame> frames;
    for (const auto& [frame, index] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 4u}}) {
        frames.push_back({index, encodeJpegFrame(form, rawFrame(frame))});
    }
    EXPECT_TRUE(equalFiles(readFile(avi), buildAvi10Mjpeg(form, frames)));
    EXPECT_EQ(readFile(folder / "a.smf"), smf);
}

TEST_F(SmfToAvi, TellsWhyThereIsNoMovie) {
    const Reader reader = open(movieOf({0, 1}).bytes());
    std::uint32_t current = 99;
    const auto failsWith = [&](const std::filesystem::path& name) {
        platform::setLastSystemError(0);
        EXPECT_EQ(Tavra_SMF2AVIA(reader.get(), name.string().c_str(), 0, &current, nullptr, nullptr), 0);
        const std::uint32_t code = platform::lastSystemError();
        platform::setLastSystemError(0);
        EXPECT_EQ(Tavra_SMF2AVIW(reader.get(), wideName(name).c_str(), 0, &current, nullptr, nullptr), 0);
        EXPECT_EQ(platform::lastSystemError(), code);
        return code;
    };
    EXPECT_EQ(failsWith(folder / "no folder" / "out.avi"), TAVRA_ERROR_FILE_STREAM);
    EXPECT_EQ(current, 99u) << "left as it was";
}

TEST_F(SmfToAvi, AQualityAboveTheFinestIsTheFinest) {
    const Reader reader = open(movieOf({0}).bytes());
    ASSERT_EQ(Tavra_SetSMFCompressor(reader.get(), TAVRA_AVI_COMPRESSOR_MJPG, 101), 1);
    convert(reader);
    MovieForm form = kForm;
    form.quality = 100;
    EXPECT_TRUE(equalFiles(readFile(avi), buildAvi10Mjpeg(form, {{0, encodeJpegFrame(form, rawFrame(0))}})));
}

TEST_F(SmfToAvi, ColoursComeBlueFirstAndRowsFromTheBottom) {
    SmfBuilder builder(3, 2, 24);
    builder.put32(64, 1);                              // each sample in the channel of its colour
    builder.addFrame(0, 2, {10, 20, 30, 40, 50, 60});  // R G R, G B G
    const FileBytes rows = {0,      40, 0,  50, 0,  0, 0, 60, 0,  0, 0, 0,
                            /**/ 0, 0,  10, 0,  20, 0, 0, 0,  30, 0, 0, 0};
    EXPECT_TRUE(
        equalFiles(converted(builder), buildAvi10NotCompressed({.width = 3, .height = 2}, {{0, rows}})));
}

}  // namespace
}  // namespace tavra::test
