#include "platform/volume.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>

#include "platform/last_error.h"
#include "platform/text.h"

namespace tavra::platform {
namespace {

// File systems whose files hold more than any recording; linux/magic.h lacks the names of some.
constexpr std::uint32_t kLargeFileSystems[] = {
    EXT4_SUPER_MAGIC,  XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,     TMPFS_MAGIC,
    RAMFS_MAGIC,       OVERLAYFS_SUPER_MAGIC, NFS_SUPER_MAGIC,   CIFS_SUPER_MAGIC,     SMB2_SUPER_MAGIC,
    EXFAT_SUPER_MAGIC, FUSE_SUPER_MAGIC,      V9FS_MAGIC,        REISERFS_SUPER_MAGIC, NILFS_SUPER_MAGIC,
    OCFS2_SUPER_MAGIC, UDF_SUPER_MAGIC,       CEPH_SUPER_MAGIC,
    0x5346544E,  // NTFS
    0x7366746E,  // NTFS, the newer driver
    0x2FC12FC1,  // ZFS
    0xCA451A4E,  // bcachefs
    0x3153464A,  // JFS
    0x01161970,  // GFS2
    0x0BD00BD0,  // Lustre
    0x47504653,  // GPFS
    0x0000482B,  // HFS+
    0x0000F15F,  // eCryptfs
    0x786F4256,  // a virtual machine's shared folder
};

// Asks the system about a name by `ask(name)`, which gives 0 on success.
template <typename Ask>
Status askAbout(std::u16string_view name, Ask ask) {
    const std::optional<std::string> narrow = toNarrowExactly(name.empty() ? u"." : name);
    if (!narrow) return failWith(error::kInvalidName);
    return ask(narrow->c_str()) == 0 ? Status() : failWith(errorFromErrno(errno));
}

}  // namespace

std::u16string_view folderOf(std::u16string_view fileName) {
    const std::size_t separator = fileName.rfind(u'/');
    return separator == std::u16string_view::npos ? std::u16string_view() : fileName.substr(0, separator + 1);
}

Status volumeKind(std::u16string_view folder, VolumeKind& kind) {
    struct statfs about {};
    TAVRA_RETURN_IF_ERROR(askAbout(folder, [&](const char* name) { return statfs(name, &about); }));
    const auto magic = static_cast<std::uint32_t>(about.f_type);
    const bool large = std::ranges::find(kLargeFileSystems, magic) != std::end(kLargeFileSystems);
    kind = magic == MSDOS_SUPER_MAGIC ? VolumeKind::Fat32 : large ? VolumeKind::Large : VolumeKind::Unknown;
    return {};
}

Status freeBytes(std::u16string_view folder, std::uint64_t& bytes) {
    struct statvfs about {};
    TAVRA_RETURN_IF_ERROR(askAbout(folder, [&](const char* name) { return statvfs(name, &about); }));
    bytes = static_cast<std::uint64_t>(about.f_bavail) * about.f_frsize;
    return {};
}

Status fileSize(const std::u16string& fileName, std::uint64_t& bytes) {
    struct stat about {};
    TAVRA_RETURN_IF_ERROR(askAbout(fileName, [&](const char* name) { return stat(name, &about); }));
    bytes = static_cast<std::uint64_t>(about.st_size);
    return {};
}

}  // namespace tavra::platform
