// Disks that are full, descriptors that leak, libpng without memory.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <string>

#include "media/save_image_file.h"
#include "media/still_support.h"
#include "platform/last_error.h"
#include "support/temp_folder.h"

namespace {

bool failWriteStructure = false;
bool failInfoStructure = false;

}  // namespace

// The linker sends libpng's creation calls here (--wrap).
extern "C" {
png_structp __real_png_create_write_struct(png_const_charp, png_voidp, png_error_ptr, png_error_ptr);
png_infop __real_png_create_info_struct(png_const_structrp);
png_structp __wrap_png_create_write_struct(png_const_charp, png_voidp, png_error_ptr, png_error_ptr);
png_infop __wrap_png_create_info_struct(png_const_structrp);

png_structp __wrap_png_create_write_struct(png_const_charp version, png_voidp pointer, png_error_ptr onError,
                                           png_error_ptr onWarning) {
    return failWriteStructure ? nullptr
                              : __real_png_create_write_struct(version, pointer, onError, onWarning);
}

png_infop __wrap_png_create_info_struct(png_const_structrp png) {
    return failInfoStructure ? nullptr : __real_png_create_info_struct(png);
}
}

namespace tavra::test {
namespace {

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

class FullDisk : public ::testing::Test {
  protected:
    // A name with this extension on a device that takes not a single byte.
    std::filesystem::path name(const std::string& extension) {
        const std::filesystem::path link = folder_ / ("full." + extension);
        std::filesystem::create_symlink("/dev/full", link);
        return link;
    }
    void SetUp() override { platform::setLastSystemError(0); }

  private:
    const TempFolder folder_;
};

TEST_F(FullDisk, Gives29ForRaw) {
    EXPECT_EQ(save(TestImage(2, 2, 1), name("raw")), 29u);
    EXPECT_EQ(platform::lastSystemError(), 29u);
}

TEST_F(FullDisk, Gives29ForBmp) {
    EXPECT_EQ(save(TestImage(2, 2, 4), name("bmp")), 29u);
    EXPECT_EQ(platform::lastSystemError(), 29u);
}

TEST_F(FullDisk, IsNotNoticedForTiff) {
    EXPECT_EQ(save(TestImage(2, 2, 4), name("tif")), 0u);
    EXPECT_EQ(platform::lastSystemError(), 0u);
}

TEST_F(FullDisk, IsNotNoticedForJpeg) {
    EXPECT_EQ(save(TestImage(200, 100, 4), name("jpg")), 0u);
    EXPECT_EQ(save(TestImage(2, 2, 1), name("jpeg")), 0u);
    EXPECT_EQ(platform::lastSystemError(), 0u);
}

TEST_F(FullDisk, Gives29ForAPngThatFitsTheBuffer) {
    EXPECT_EQ(save(TestImage(2, 2, 4), name("png")), 29u);
    EXPECT_EQ(platform::lastSystemError(), 29u);
}

TEST_F(FullDisk, Gives29ForAPngThatFailsOnTheWay) {
    const TestImage image(500, 400, 4);
    const std::filesystem::path path = name("png");
    EXPECT_EQ(save(image, path, 0), 29u);
    EXPECT_EQ(save(image, path, 1), 29u);
    EXPECT_EQ(platform::lastSystemError(), 29u);
}

// A disk that becomes full in the middle: the process may write files of 4 KiB only.
TEST(DiskThatFills, TheFirstBytesAreThereAndTheResultIs29) {
    const TempFolder folder;
    const TestImage image(200, 100, 1);
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {4096, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::uint32_t raw = save(image, folder / "a.raw");
    const std::uint32_t bmp = save(image, folder / "a.bmp");
    const std::uint32_t tiff = save(image, folder / "a.tif");
    const std::uint32_t jpeg = save(image, folder / "a.jpg");
    const std::uint32_t png = save(image, folder / "a.png");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(raw, 29u);
    EXPECT_EQ(bmp, 29u);
    EXPECT_EQ(tiff, 0u);
    EXPECT_EQ(jpeg, 0u);
    EXPECT_EQ(png, 29u);
    for (const char* name : {"a.raw", "a.bmp", "a.tif", "a.jpg"})
        EXPECT_EQ(readFile(folder / name).size(), 4096u) << name;
}

TEST(StillFaults, LibpngWithoutMemoryGives8) {
    const TempFolder folder;
    const TestImage image(2, 2, 1);
    for (bool* const fault : {&failWriteStructure, &failInfoStructure}) {
        platform::setLastSystemError(0);
        *fault = true;
        EXPECT_EQ(save(image, folder / "a.png"), 8u);
        *fault = false;
        EXPECT_EQ(platform::lastSystemError(), 8u);
    }
    EXPECT_EQ(save(image, folder / "a.png"), 0u);
}

TEST(StillFaults, NoSaveLeavesAFileOpen) {
    const TempFolder folder;
    const TestImage mono(200, 100, 1);
    const TestImage words(200, 100, 256);
    const std::size_t before = openDescriptors();
    for (const char* extension : {"raw", "bmp", "tif", "jpg", "png"}) {
        const std::filesystem::path full = folder / (std::string("full.") + extension);
        std::filesystem::create_symlink("/dev/full", full);
        for (const std::filesystem::path& path : {folder / (std::string("a.") + extension), full}) {
            static_cast<void>(save(mono, path));
            static_cast<void>(save(words, path));
        }
    }
    failInfoStructure = true;
    EXPECT_EQ(save(mono, folder / "a.png"), 8u);
    failInfoStructure = false;
    EXPECT_EQ(openDescriptors(), before);
}

// Not by permissions, which do not bind the superuser.
TEST(StillFaults, APlaceThatTakesNoFilesGives110) {
    const TempFolder folder;
    ASSERT_EQ(save(TestImage(2, 2, 1), folder / "file.raw"), 0u);
    EXPECT_EQ(save(TestImage(2, 2, 1), folder / "file.raw" / "a.bmp"), 110u) << "below a file";
    EXPECT_EQ(save(TestImage(2, 2, 1), "/proc/tavra.bmp"), 110u) << "nobody makes files there";
}

// Half of a pair of units: no encoding of the system has bytes for it, and a name with a question mark in its
// place would be that of another file.
TEST(StillFaults, ANameThatTheSystemCannotExpressGives110AndNoFile) {
    const TempFolder folder;
    const std::uint8_t pixels[8] = {};
    CSaveImageFile* const saver = new CSaveImageFile;
    saver->AddRef();
    for (const char16_t* const extension : {u".raw", u".bmp", u".tif", u".jpg", u".png"}) {
        for (const char16_t half : {char16_t{0xD800}, char16_t{0xDFFF}}) {
            const std::u16string name = wideName(folder.path()) + u"/a" + half + u"b" + extension;
            platform::setLastSystemError(0);
            EXPECT_EQ(saver->SaveImageFile(4, 2, 1, pixels, name.c_str(), 0), 110u);
            EXPECT_EQ(platform::lastSystemError(), 110u);
        }
    }
    saver->Release();
    EXPECT_TRUE(folder.isEmpty());
}

// With UndefinedBehaviorSanitizer, which comes together with the other, writes cannot be counted: it looks
// into memory by writing it into pipes.
#ifndef __SANITIZE_ADDRESS__

// Write calls of this process so far.
std::uint64_t writeCalls() {
    std::ifstream counters("/proc/self/io");
    for (std::string name; counters >> name;) {
        std::uint64_t value = 0;
        counters >> value;
        if (name == "syscw:") return value;
    }
    ADD_FAILURE() << "the system does not count";
    return 0;
}

TEST(StillWrites, RawBmpAndTiffAreOneWriteEach) {
    const TempFolder folder;
    const TestImage image(1000, 700, 4);
    for (const char* name : {"a.raw", "a.bmp", "a.tif"}) {
        const std::uint64_t before = writeCalls();
        const std::uint32_t result = save(image, folder / name);
        const std::uint64_t after = writeCalls();
        EXPECT_EQ(result, 0u) << name;
        EXPECT_EQ(after - before, 1u) << name;
    }
}

#endif

}  // namespace
}  // namespace tavra::test
