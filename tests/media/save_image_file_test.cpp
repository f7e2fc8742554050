#include "media/save_image_file.h"

#include <gtest/gtest.h>

#include <thread>

#include "media/still_support.h"
#include "platform/last_error.h"
#include "stages/factory.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

enum class Kind { Nothing, Raw, Bmp, Tiff, Jpeg, Png, Empty };

// What lies in a file, by its first bytes. The pixels of the images below begin with 7.
Kind kindOf(const std::filesystem::path& path) {
    if (!std::filesystem::exists(path)) return Kind::Nothing;
    const std::vector<std::uint8_t> bytes = readFile(path);
    if (bytes.empty()) return Kind::Empty;
    if (bytes[0] == 7) return Kind::Raw;
    if (bytes[0] == 'B' && bytes[1] == 'M') return Kind::Bmp;
    if (bytes[0] == 'I' && bytes[1] == 'I') return Kind::Tiff;
    if (bytes[0] == 0xFF && bytes[1] == 0xD8) return Kind::Jpeg;
    return bytes[0] == 0x89 && bytes[1] == 'P' ? Kind::Png : Kind::Nothing;
}

constexpr std::uint8_t kPixels[64] = {7, 8, 9, 10};

TEST(SaveImageFile, TheTextBehindTheLastDotChoosesTheType) {
    const std::pair<const char*, Kind> names[] = {
        {"a.raw", Kind::Raw},      {"a.", Kind::Raw},    {"a.R", Kind::Raw},    {"a.b.bmp", Kind::Bmp},
        {"a.raw.tif", Kind::Tiff}, {"a.t", Kind::Tiff},  {"a.TIF", Kind::Tiff}, {"a.tiff", Kind::Tiff},
        {"a.Ti", Kind::Tiff},      {"a.png", Kind::Png}, {"a.P", Kind::Png},    {".bmp", Kind::Bmp},
        {"a.bmpx", Kind::Bmp},     {"a.xyz", Kind::Bmp}, {"a.raw ", Kind::Bmp}, {"a b.c d.PNG", Kind::Png},
        {"a.jpg", Kind::Jpeg},     {"a.J", Kind::Jpeg},  {"a.Jpe", Kind::Jpeg}, {"a.jpeg", Kind::Jpeg},
    };
    for (const auto& [name, kind] : names) {
        SCOPED_TRACE(name);
        const TempFolder folder;
        EXPECT_EQ(save(2, 1, 0, 1, kPixels, folder / name), 0u);
        EXPECT_EQ(kindOf(folder / name), kind);
    }
}

TEST(SaveImageFile, AFoldersDotCountsWhenTheNameHasNone) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "shots.t");
    std::filesystem::create_directory(folder / "shots.tif");
    EXPECT_EQ(save(2, 1, 0, 1, kPixels, folder / "shots.t/name"), 0u);
    EXPECT_EQ(kindOf(folder / "shots.t/name"), Kind::Bmp) << "t/name is the beginning of nothing";
}

TEST(SaveImageFile, ANameWithoutADotIsRefusedWith87) {
    platform::setLastSystemError(0);
    EXPECT_EQ(save(2, 1, 0, 1, kPixels, "name"), 87u);
    EXPECT_EQ(platform::lastSystemError(), 87u);
    EXPECT_EQ(save(2, 1, 0, 1, kPixels, ""), 87u);
    EXPECT_FALSE(std::filesystem::exists("name"));
}

TEST(SaveImageFile, WithoutPixelsOrNameItIsRefusedWith87) {
    const TempFolder folder;
    for (const char* name : {"a.raw", "a.bmp", "a.tif", "a.jpg", "a.png"}) {
        EXPECT_EQ(save(2, 1, 0, 1, nullptr, folder / name), 87u);
    }
    EXPECT_TRUE(folder.isEmpty());

    CSaveImageFile* const saver = new CSaveImageFile;
    saver->AddRef();
    EXPECT_EQ(saver->SaveImageFile(2, 1, 1, kPixels, nullptr, 0), 87u);
    saver->Release();
}

TEST(SaveImageFile, APlaceThatCannotBeOpenedGives110) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "folder.bmp");
    for (const char* name :
         {"missing/a.raw", "missing/a.bmp", "missing/a.tif", "missing/a.png", "folder.bmp"}) {
        SCOPED_TRACE(name);
        platform::setLastSystemError(0);
        EXPECT_EQ(save(2, 1, 0, 1, kPixels, folder / name), 110u);
        EXPECT_EQ(platform::lastSystemError(), 110u);
    }
}

TEST(SaveImageFile, AFormatIsRefusedBeforeThePlaceIsLookedAt) {
    EXPECT_EQ(save(2, 1, 0, 2, kPixels, "missing-folder/a.bmp"), 87u);
    EXPECT_EQ(save(2, 1, 0, 256, kPixels, "missing-folder/a.bmp"), 110u) << "refused by the writer only";
}

TEST(SaveImageFile, AnOlderFileIsReplaced) {
    const TempFolder folder;
    const TestImage large(50, 50, 1);
    ASSERT_EQ(save(large, folder / "a.raw"), 0u);
    ASSERT_EQ(save(1, 1, 0, 1, kPixels, folder / "a.raw"), 0u);
    EXPECT_EQ(readFile(folder / "a.raw"), std::vector<std::uint8_t>{7});
}

TEST(SaveImageFile, NamesOutsideAsciiAreWhole) {
    const TempFolder folder;
    const std::filesystem::path path = folder / "\xC3\xA4\xE5\x86\x99.raw";
    ASSERT_EQ(save(1, 1, 0, 1, kPixels, path), 0u);
    EXPECT_EQ(readFile(path), std::vector<std::uint8_t>{7});
}

TEST(SaveImageFile, TheShortFormTakesRowsPaddedToFour) {
    const TempFolder folder;
    const std::uint8_t data[] = {1, 2, 3, 4, 5, 0xEE, 0xEE, 0xEE, 6, 7, 8, 9, 10, 0xEE, 0xEE, 0xEE};
    const std::u16string name = wideName(folder / "a.tif");
    CSaveImageFile* const saver = new CSaveImageFile;
    saver->AddRef();
    EXPECT_EQ(saver->SaveImageFile(5, 2, 1, data, name.c_str(), 0), 0u);
    saver->Release();
    const std::vector<std::uint8_t> file = readFile(folder / "a.tif");
    EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 162, file.end()),
              (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(SaveImageFile, PixelsMayBeginAtAnOddAddress) {
    const TempFolder folder;
    std::vector<std::uint8_t> memory(64);
    const Bytes words = Bytes().u16(0x123).u16(0x456);
    std::copy(words.begin(), words.end(), memory.begin() + 1);
    ASSERT_EQ(save(2, 1, 0, 32, memory.data() + 1, folder / "a.tif"), 0u);
    const std::vector<std::uint8_t> file = readFile(folder / "a.tif");
    EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 162, file.end()),
              (std::vector<std::uint8_t>{0x30, 0x12, 0x60, 0x45}));
}

TEST(SaveImageFile, CountsItsReferences) {
    ISUnknown* const object = makeSaveImageFile();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->AddRef(), 1u);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object->Release(), 0u);
}

TEST(SaveImageFile, IsFactoryCode128) {
    ISUnknown* const object = CreateStageObject(128);
    auto* const saver = dynamic_cast<CSaveImageFile*>(object);
    ASSERT_NE(saver, nullptr);
    const TempFolder folder;
    EXPECT_EQ(saver->SaveImageFile(1, 1, 1, kPixels, wideName(folder / "a.raw").c_str(), 0), 0u);
    EXPECT_EQ(readFile(folder / "a.raw"), std::vector<std::uint8_t>{7});
    EXPECT_EQ(object->Release(), 0u) << "it arrives with count one";
}

TEST(SaveImageFile, WithoutMemoryForTheNameItIsCodeEight) {
    const TempFolder folder;
    CSaveImageFile* const saver = new CSaveImageFile;
    saver->AddRef();
    for (const char* extension : {"raw", "bmp", "tif", "jpg", "png"}) {
        const std::u16string name = wideName(folder / (std::string("a.") + extension));
        platform::setLastSystemError(0);
        std::uint32_t result = 0;
        {
            const FailAllocationsFrom all(0);
            result = saver->SaveImageFile(2, 1, 1, kPixels, name.c_str(), 0);
        }
        EXPECT_EQ(result, 8u) << extension;
        EXPECT_EQ(platform::lastSystemError(), 8u) << extension;
    }
    saver->Release();
    EXPECT_TRUE(folder.isEmpty());
}

TEST(SaveImageFile, ManyThreadsSaveAtOnce) {
    const TempFolder folder;
    const TestImage image(33, 9, 4);
    const char* const extensions[] = {"raw", "bmp", "tif", "jpg", "png"};
    std::vector<std::vector<std::uint8_t>> wanted;
    for (const char* extension : extensions)
        wanted.push_back(savedBytes(image, folder / (std::string("wanted.") + extension)));

    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (const char* extension : extensions)
                EXPECT_EQ(save(image, folder / (std::to_string(t) + "." + extension)), 0u);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < 4; ++t) {
        for (std::size_t e = 0; e < wanted.size(); ++e) {
            EXPECT_EQ(readFile(folder / (std::to_string(t) + "." + extensions[e])), wanted[e]);
        }
    }
}

TEST(SaveImageFile, JpegRefusesMonoWordsAtOnceAndOtherWordsLate) {
    for (const std::uint32_t format : {16u, 32u, 64u, 0u, 3u, 128u}) {
        const TempFolder folder;
        EXPECT_EQ(save(2, 1, 0, format, kPixels, folder / "a.jpg"), 87u);
        EXPECT_TRUE(folder.isEmpty());
    }
    for (const std::uint32_t format : {2u, 256u, 512u}) {
        const TempFolder folder;
        EXPECT_EQ(save(2, 1, 0, format, kPixels, folder / "a.jpg"), 87u);
        EXPECT_EQ(kindOf(folder / "a.jpg"), Kind::Empty);
    }
}

TEST(SaveImageFile, SizesBeyondAllMemoryAreRefusedForRaw) {
    const TempFolder folder;
    EXPECT_EQ(save(0xFFFFFFFF, 0xFFFFFFFF, 0, 1, kPixels, folder / "a.raw"), 87u);
    EXPECT_EQ(save(0xFFFFFFFF, 0xFFFFFFFF, 0, 512, kPixels, folder / "a.raw"), 87u) << "past 64 bits";
    EXPECT_EQ(save(0x80000000, 0x40000000, 0, 512, kPixels, folder / "a.raw"), 87u) << "0 in 64 bits";
    EXPECT_TRUE(folder.isEmpty());
}

}  // namespace
}  // namespace tavra::test
