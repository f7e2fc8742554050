#include "platform/volume.h"

#include <windows.h>

#include <cwchar>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

std::wstring nativeName(std::u16string_view name) {
    return name.empty() ? L".\\" : std::wstring(name.begin(), name.end());
}

Status systemFailure() {
    return Status(GetLastError());
}

}  // namespace

std::u16string_view folderOf(std::u16string_view fileName) {
    const std::size_t separator = fileName.find_last_of(u"\\/");
    return separator == std::u16string_view::npos ? std::u16string_view() : fileName.substr(0, separator + 1);
}

Status volumeKind(std::u16string_view folder, VolumeKind& kind) {
    wchar_t root[MAX_PATH + 1] = {};
    if (!GetVolumePathNameW(nativeName(folder).c_str(), root, MAX_PATH)) return systemFailure();
    wchar_t system[MAX_PATH + 1] = {};
    if (!GetVolumeInformationW(root, nullptr, 0, nullptr, nullptr, nullptr, system, MAX_PATH))
        return systemFailure();
    kind = std::wcscmp(system, L"NTFS") == 0    ? VolumeKind::Large
           : std::wcscmp(system, L"FAT32") == 0 ? VolumeKind::Fat32
                                                : VolumeKind::Unknown;
    return {};
}

Status freeBytes(std::u16string_view folder, std::uint64_t& bytes) {
    ULARGE_INTEGER available{};
    if (!GetDiskFreeSpaceExW(nativeName(folder).c_str(), &available, nullptr, nullptr))
        return systemFailure();
    bytes = available.QuadPart;
    return {};
}

Status fileSize(const std::u16string& fileName, std::uint64_t& bytes) {
    WIN32_FILE_ATTRIBUTE_DATA about{};
    if (!GetFileAttributesExW(nativeName(fileName).c_str(), GetFileExInfoStandard, &about))
        return systemFailure();
    bytes = static_cast<std::uint64_t>(about.nFileSizeHigh) << 32 | about.nFileSizeLow;
    return {};
}

}  // namespace tavra::platform
