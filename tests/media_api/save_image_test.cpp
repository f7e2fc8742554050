// Saving a still through the exported functions: names, results and the last error.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/temp_folder.h"
#include "support/usb_double/usb_double_fixture.h"
#include "tavra/tavra_api.h"

namespace tavra::test {
namespace {

class SaveImageTest : public UsbDoubleTest {
  protected:
    SaveImageTest() {
        usb.addCamera();
        handle = Tavra_Open(0);
    }
    ~SaveImageTest() override { Tavra_Close(handle); }

    std::uint32_t lastError() const { return Tavra_GetLastError(handle); }
    TavraBool saveW(const std::string& name, std::uint32_t format) {
        return Tavra_SaveImageW(handle, 4, 2, format, pixels, (folder / name).u16string().c_str(), 0);
    }
    std::string contents(const std::string& name) const {
        std::ifstream file(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    tavra::test::TempFolder folder;
    TavraHandle handle = nullptr;
    const std::uint8_t pixels[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
};

TEST_F(SaveImageTest, WideAndNarrowNamesMakeTheSameFile) {
    EXPECT_EQ(saveW("wide.raw", 1), 1);
    EXPECT_EQ(Tavra_SaveImageA(handle, 4, 2, 1, pixels, (folder / "narrow.raw").string().c_str(), 0), 1);
    EXPECT_EQ(contents("wide.raw"), "abcdefgh");
    EXPECT_EQ(contents("narrow.raw"), "abcdefgh");
}

TEST_F(SaveImageTest, SuccessClearsTheLastError) {
    EXPECT_EQ(saveW("no dot", 1), 0);
    EXPECT_EQ(lastError(), 0xE000000Fu);
    EXPECT_EQ(saveW("image.raw", 1), 1);
    EXPECT_EQ(lastError(), 0u);
}

TEST_F(SaveImageTest, AnUnknownEndingIsRefused) {
    for (const char* name : {"image.bmpx", "image.gif", "image"}) {
        EXPECT_EQ(saveW(name, 1), 0) << name;
        EXPECT_EQ(lastError(), 0xE000000Fu);
    }
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(SaveImageTest, AFormatThatTheTypeDoesNotTakeIs87) {
    EXPECT_EQ(saveW("image.png", 16), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_TRUE(folder.isEmpty());
}

// The last argument is a compression: from 0, the finest; from 100 on it is the same as 50.
TEST_F(SaveImageTest, JpegFilesFollowTheCompression) {
    const auto stepsOf = [&](const std::string& name) { return contents(name).substr(20 + 5, 64); };
    const auto saveBoth = [&](std::uint32_t compression) {
        const std::string wide = "w" + std::to_string(compression) + ".jpg";
        const std::string narrow = "n" + std::to_string(compression) + ".jpeg";
        EXPECT_EQ(Tavra_SaveImageW(handle, 4, 2, 1, pixels, (folder / wide).u16string().c_str(), compression),
                  1);
        EXPECT_EQ(lastError(), 0u);
        EXPECT_EQ(Tavra_SaveImageA(handle, 4, 2, 1, pixels, (folder / narrow).string().c_str(), compression),
                  1);
        EXPECT_EQ(contents(wide), contents(narrow));
        EXPECT_EQ(contents(wide).substr(0, 4), "\xFF\xD8\xFF\xE0");
        EXPECT_EQ(contents(wide).substr(contents(wide).size() - 2), "\xFF\xD9");
        return stepsOf(wide);
    };
    EXPECT_EQ(saveBoth(0), std::string(64, 1));
    EXPECT_EQ(saveBoth(99), std::string(64, '\xFF'));
    EXPECT_EQ(saveBoth(100)[0], 16);
    EXPECT_EQ(saveBoth(100), saveBoth(50));
    EXPECT_EQ(saveBoth(5000), saveBoth(100));
}

TEST_F(SaveImageTest, JpegRefusesWordsWithAnEmptyFileLeftBehind) {
    for (const std::uint32_t format : {2u, 256u, 512u}) {
        const std::string name = std::to_string(format) + ".jpg";
        EXPECT_EQ(saveW(name, format), 0) << format;
        EXPECT_EQ(lastError(), 87u);
        EXPECT_TRUE(std::filesystem::exists(folder / name));
        EXPECT_EQ(contents(name), "");
    }
    for (const std::uint32_t format : {16u, 32u, 64u, 3u}) {
        EXPECT_EQ(saveW("none.jpg", format), 0) << format;
        EXPECT_EQ(lastError(), 87u);
        EXPECT_FALSE(std::filesystem::exists(folder / "none.jpg"));
    }
}

TEST_F(SaveImageTest, APlaceThatCannotBeOpenedIs110) {
    EXPECT_EQ(saveW("no such folder/image.png", 1), 0);
    EXPECT_EQ(lastError(), 110u);
}

TEST_F(SaveImageTest, ANarrowNameOf259CharactersDoesNotFitItsBuffer) {
    const std::string longest = std::string(254, 'x') + ".raw";  // 258 characters
    EXPECT_EQ(Tavra_SaveImageA(handle, 4, 2, 1, pixels, longest.c_str(), 0), 0);
    EXPECT_EQ(lastError(), 110u) << "it fits, but no file system takes it";
    EXPECT_EQ(Tavra_SaveImageA(handle, 4, 2, 1, pixels, ("x" + longest).c_str(), 0), 0);
    EXPECT_EQ(lastError(), 0xE000000Fu);
    EXPECT_EQ(Tavra_SaveImageA(handle, 4, 2, 1, pixels, nullptr, 0), 0);
    EXPECT_EQ(lastError(), 0xE000000Fu);
}

TEST_F(SaveImageTest, ABadHandleIsToldGlobally) {
    EXPECT_EQ(Tavra_SaveImageW(nullptr, 4, 2, 1, pixels, u"x.raw", 0), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

}  // namespace
}  // namespace tavra::test
