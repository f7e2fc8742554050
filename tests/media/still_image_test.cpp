#include "media/still_image.h"

#include <gtest/gtest.h>

#include "platform/last_error.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint8_t kPixels[64] = {7, 8, 9, 10};

std::uint32_t saveNamed(const std::u16string& name, std::uint32_t format = 1) {
    return saveImage(2, 1, format, kPixels, name.c_str(), 0).code();
}

TEST(StillImage, KnownExtensionsAreSaved) {
    for (const char* name : {"a.raw", "a.", "a.b.bmp", "a.t", "a.TIF", "a.Ti", "a.tiff", "a.p", "a.png"}) {
        const TempFolder folder;
        EXPECT_EQ(saveNamed(wideName(folder / name)), 0u) << name;
        EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
    }
}

TEST(StillImage, NoDotOrAnotherExtensionGivesTheFileNameError) {
    const TempFolder folder;
    for (const char* name : {"a.bmpx", "a.gif", "a.tiffs", "a.raw ", "folder.d/name", "folder.bmp/name"}) {
        EXPECT_EQ(saveNamed(wideName(folder / name)), 0xE000000Fu) << name;
    }
    EXPECT_EQ(saveNamed(u"name"), 0xE000000Fu);
    EXPECT_EQ(saveNamed(u""), 0xE000000Fu);
    EXPECT_EQ(saveImage(2, 1, 1, kPixels, nullptr, 0).code(), 0xE000000Fu);
    EXPECT_TRUE(folder.isEmpty());
}

TEST(StillImage, TheNameIsLookedAtBeforeTheFormat) {
    EXPECT_EQ(saveNamed(u"a.gif", 3), 0xE000000Fu);
    EXPECT_EQ(saveNamed(u"a.png", 3), 87u);
}

TEST(StillImage, TheSavesResultComesThrough) {
    const TempFolder folder;
    EXPECT_EQ(saveNamed(wideName(folder / "missing/a.bmp")), 110u);
    EXPECT_EQ(saveNamed(wideName(folder / "a.bmp"), 2), 87u);
    EXPECT_TRUE(folder.isEmpty());
}

TEST(StillImage, WithoutMemoryForTheObjectItIsCodeEight) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "a.bmp");
    std::uint32_t result = 0;
    std::size_t failures = 0;
    {
        const FailAllocationsFrom all(0);
        result = saveImage(2, 1, 1, kPixels, name.c_str(), 0).code();
        failures = FailAllocationsFrom::failures();
    }
    EXPECT_EQ(result, 8u);
    EXPECT_EQ(failures, 1u) << "the object is the first that is asked for, and the last";
    EXPECT_TRUE(folder.isEmpty());
}

TEST(StillImage, RawTakesDenseRowsAndTheOthersPaddedOnes) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 0xEE, 4, 5, 6, 0xEE};
    EXPECT_TRUE(saveImage(3, 2, 1, data, wideName(folder / "a.raw").c_str(), 0).ok());
    EXPECT_EQ(readFile(folder / "a.raw"), (std::vector<std::uint8_t>{1, 2, 3, 0xEE, 4, 5}));
    EXPECT_TRUE(saveImage(3, 2, 1, data, wideName(folder / "a.tif").c_str(), 0).ok());
    const std::vector<std::uint8_t> tiff = readFile(folder / "a.tif");
    EXPECT_EQ(std::vector<std::uint8_t>(tiff.end() - 6, tiff.end()),
              (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}));
}

}  // namespace
}  // namespace tavra::test
