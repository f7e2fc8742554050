// The linker sends the calls about file systems here (--wrap), so that the answer can be any file system's.
#include "platform/volume.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <optional>

#include "support/temp_folder.h"

namespace {

std::optional<long> magicNumber;
std::optional<struct statvfs> volumeFigures;

}  // namespace

extern "C" {
int __real_statfs(const char*, struct statfs*);
int __real_statvfs(const char*, struct statvfs*);
int __wrap_statfs(const char*, struct statfs*);
int __wrap_statvfs(const char*, struct statvfs*);

int __wrap_statfs(const char* name, struct statfs* about) {
    const int result = __real_statfs(name, about);
    if (magicNumber) about->f_type = *magicNumber;
    return result;
}

int __wrap_statvfs(const char* name, struct statvfs* about) {
    const int result = __real_statvfs(name, about);
    if (volumeFigures) *about = *volumeFigures;
    return result;
}
}

namespace tavra::platform {
namespace {

using test::TempFolder;
using test::wideName;

TEST(LinuxVolume, TheKindFollowsTheFileSystem) {
    const auto kindOf = [](long magic) {
        magicNumber = magic;
        VolumeKind kind{};
        EXPECT_TRUE(volumeKind(u"/", kind).ok());
        magicNumber.reset();
        return kind;
    };
    EXPECT_EQ(kindOf(0xEF53), VolumeKind::Large) << "ext2 to ext4";
    EXPECT_EQ(kindOf(0x58465342), VolumeKind::Large) << "XFS";
    EXPECT_EQ(kindOf(0x9123683E), VolumeKind::Large) << "Btrfs, whose number has the top bit set";
    EXPECT_EQ(kindOf(static_cast<std::int32_t>(0x9123683E)), VolumeKind::Large) << "or as a negative number";
    EXPECT_EQ(kindOf(0x01021994), VolumeKind::Large) << "tmpfs";
    EXPECT_EQ(kindOf(0x6969), VolumeKind::Large) << "NFS";
    EXPECT_EQ(kindOf(0x5346544E), VolumeKind::Large) << "NTFS";
    EXPECT_EQ(kindOf(0x2011BAB0), VolumeKind::Large) << "exFAT";
    EXPECT_EQ(kindOf(0x4D44), VolumeKind::Fat32) << "vfat";
    EXPECT_EQ(kindOf(0x9FA0), VolumeKind::Unknown) << "proc";
    EXPECT_EQ(kindOf(0x137F), VolumeKind::Unknown) << "Minix";
}

TEST(LinuxVolume, FreeBytesAreThoseForTheCallerIn64Bits) {
    struct statvfs figures {};
    figures.f_bsize = 65536;
    figures.f_frsize = 4096;
    figures.f_bfree = 0x1'0000'0009;
    figures.f_bavail = 0x1'0000'0005;
    volumeFigures = figures;
    std::uint64_t bytes = 0;
    EXPECT_TRUE(freeBytes(u"/", bytes).ok());
    volumeFigures.reset();
    EXPECT_EQ(bytes, 0x1000'0000'5000u);
}

TEST(LinuxVolume, AFolderThatIsNotThereCannotBeAsked) {
    const TempFolder folder;
    const std::u16string missing = wideName(folder / "missing") + u"/";
    VolumeKind kind = VolumeKind::Fat32;
    std::uint64_t bytes = 77;
    EXPECT_EQ(volumeKind(missing, kind).code(), 2u);
    EXPECT_EQ(kind, VolumeKind::Fat32);
    EXPECT_EQ(freeBytes(missing, bytes).code(), 2u);
    EXPECT_EQ(volumeKind(std::u16string(1, char16_t{0xD800}), kind).code(), 123u);
}

}  // namespace
}  // namespace tavra::platform
