// SMF movies through the exported functions.
#include <gtest/gtest.h>

#include "media/movie/smf_builder.h"
#include "platform/last_error.h"
#include "support/temp_folder.h"
#include "tavra/tavra_api.h"

namespace tavra::test {
namespace {

class SmfExports : public testing::Test {
  protected:
    SmfExports() {
        SmfBuilder builder(4, 2, 8);
        builder.put32(40, 0x47504A4D);
        builder.addFrame(0, 1, std::vector<std::uint8_t>(8, 1));
        builder.addFrame(4, 1, std::vector<std::uint8_t>(8, 2));
        builder.write(path);
        platform::setLastSystemError(0);
    }
    static std::uint32_t systemError() { return platform::lastSystemError(); }

    const TempFolder folder;
    const std::filesystem::path path = folder / "a.smf";
};

TEST_F(SmfExports, TellWhatAMovieHolds) {
    const TavraSmfHandle readers[] = {Tavra_SMFOpenFileW(path.u16string().c_str()),
                                      Tavra_SMFOpenFileA(path.string().c_str())};
    for (const TavraSmfHandle reader : readers) {
        ASSERT_NE(reader, nullptr);
        std::uint32_t count = 0, last = 0, compressor = 0, quality = 0;
        EXPECT_EQ(Tavra_GetSMFFileInfo(reader, &count, &last), 1);
        EXPECT_EQ(count, 2u);
        EXPECT_EQ(last, 4u);
        EXPECT_EQ(Tavra_GetSMFCompressor(reader, &compressor, &quality), 1);
        EXPECT_EQ(compressor, 0x47504A4Du);
        EXPECT_EQ(quality, 75u);
        EXPECT_EQ(Tavra_GetSMFFileInfo(reader, nullptr, nullptr), 1);
        EXPECT_EQ(Tavra_GetSMFCompressor(reader, nullptr, nullptr), 1);
        Tavra_SMFCloseFile(reader);
    }
}

TEST_F(SmfExports, ChangeTheCompressorOfTheReaderAlone) {
    const auto before = readFile(path);
    const TavraSmfHandle reader = Tavra_SMFOpenFileW(path.u16string().c_str());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(Tavra_SetSMFCompressor(reader, 0, 30), 1);
    std::uint32_t compressor = 9, quality = 9;
    EXPECT_EQ(Tavra_GetSMFCompressor(reader, &compressor, &quality), 1);
    EXPECT_EQ(compressor, 0u);
    EXPECT_EQ(quality, 30u);
    Tavra_SMFCloseFile(reader);
    EXPECT_EQ(readFile(path), before);
}

TEST_F(SmfExports, DevelopAMovie) {
    const auto before = readFile(path);
    const std::filesystem::path avi = folder / "a.avi";
    const TavraSmfHandle reader = Tavra_SMFOpenFileW(path.u16string().c_str());
    ASSERT_NE(reader, nullptr);
    ASSERT_EQ(Tavra_SetSMFCompressor(reader, TAVRA_AVI_COMPRESSOR_NONE, 75), 1);
    std::uint32_t current = 99;
    EXPECT_EQ(Tavra_SMF2AVIW(reader, avi.u16string().c_str(), 0, &current, nullptr, nullptr), 1);
    EXPECT_EQ(current, 1u);
    Tavra_SMFCloseFile(reader);
    EXPECT_EQ(readFile(path), before);
    // Frames 0 and 4: the opening chunk, a frame, three empty ones, a frame; then the index of all of them.
    constexpr std::size_t kFrame = 8 + 8, kEmpty = 8, kIndex = 8 + 16 * 6;
    const auto bytes = readFile(avi);
    ASSERT_EQ(bytes.size(), 4096 + kEmpty + 2 * kFrame + 3 * kEmpty + kIndex);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin() + 4112, bytes.begin() + 4120),
              std::vector<std::uint8_t>(8, 1));
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin() + 4152, bytes.begin() + 4160),
              std::vector<std::uint8_t>(8, 2));
}

TEST_F(SmfExports, DoNotDevelopAMovieOntoItself) {
    const auto before = readFile(path);
    const TavraSmfHandle reader = Tavra_SMFOpenFileW(path.u16string().c_str());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(Tavra_SMF2AVIW(reader, path.u16string().c_str(), 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(systemError(), TAVRA_ERROR_FILE_STREAM);
    Tavra_SMFCloseFile(reader);
    EXPECT_EQ(readFile(path), before);
}

TEST_F(SmfExports, GiveNoReaderForWhatCannotBeOpened) {
    EXPECT_EQ(Tavra_SMFOpenFileW((folder / "none.smf").u16string().c_str()), nullptr);
    EXPECT_EQ(systemError(), 2u);
    EXPECT_EQ(Tavra_SMFOpenFileW(nullptr), nullptr);
    EXPECT_EQ(systemError(), 123u);
    EXPECT_EQ(Tavra_SMFOpenFileA(nullptr), nullptr);
    EXPECT_EQ(Tavra_SMFOpenFileA(std::string(260, 'x').c_str()), nullptr);
    EXPECT_EQ(systemError(), 123u);
}

TEST_F(SmfExports, TellNoCodeOfAFileThatIsNoMovie) {
    SmfBuilder::write(path, std::vector<std::uint8_t>(1000, 'x'));
    EXPECT_EQ(Tavra_SMFOpenFileW(path.u16string().c_str()), nullptr);
    EXPECT_EQ(systemError(), 0u);
}

TEST_F(SmfExports, NeedAReader) {
    Tavra_SMFCloseFile(nullptr);
    std::uint32_t word = 7;
    const auto expect87 = [](TavraBool result) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(systemError(), 87u);
        platform::setLastSystemError(0);
    };
    expect87(Tavra_GetSMFFileInfo(nullptr, &word, &word));
    expect87(Tavra_GetSMFCompressor(nullptr, &word, &word));
    expect87(Tavra_SetSMFCompressor(nullptr, 0, 0));
    expect87(Tavra_SMF2AVIW(nullptr, u"a.avi", 0, &word, nullptr, nullptr));
    expect87(Tavra_SMF2AVIA(nullptr, "a.avi", 0, &word, nullptr, nullptr));
    EXPECT_EQ(word, 7u);
}

TEST_F(SmfExports, ConvertNothingWithoutAName) {
    const TavraSmfHandle reader = Tavra_SMFOpenFileW(path.u16string().c_str());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(Tavra_SMF2AVIW(reader, nullptr, 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(systemError(), 123u);
    EXPECT_EQ(Tavra_SMF2AVIA(reader, nullptr, 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Tavra_SMF2AVIA(reader, std::string(260, 'x').c_str(), 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(systemError(), 123u);
    Tavra_SMFCloseFile(reader);
}

}  // namespace
}  // namespace tavra::test
