#include "platform/firmware_image.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "platform/last_error.h"
#include "platform/module.h"

namespace tavra::platform {
namespace {

constexpr const wchar_t* kFolderVariable = L"TAVRA_FIRMWARE_DIR";
constexpr const wchar_t* kResourceType = L"FW_HEX_FILES";

// Resource numbers of the images.
constexpr struct {
    std::uint16_t productType;
    WORD number;
} kResources[] = {{773, 133}, {1541, 128}, {1797, 131}, {2053, 130}};

// The system's code; the second when it tells none.
Status failWithSystemError(DWORD otherwise) {
    const DWORD code = GetLastError();
    return failWith(code != ERROR_SUCCESS ? code : otherwise);
}

class File {
  public:
    explicit File(const std::wstring& name)
        : handle_(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~File() {
        if (isOpen()) CloseHandle(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

    Status read(std::span<char> text, std::uint32_t& size) const {
        DWORD got = 0;
        if (!ReadFile(handle_, text.data(), static_cast<DWORD>(text.size()), &got, nullptr)) {
            return failWithSystemError(ERROR_READ_FAULT);
        }
        if (got == 0) return failWith(ERROR_HANDLE_EOF);
        if (got == text.size()) return failWith(error::kOutOfMemory);
        size = got;
        return Status();
    }

  private:
    HANDLE handle_;
};

// The folder that the environment names, with a separator behind it; empty if it names none.
std::wstring namedFolder() {
    std::wstring folder(GetEnvironmentVariableW(kFolderVariable, nullptr, 0), L'\0');
    if (folder.empty()) return folder;
    folder.resize(GetEnvironmentVariableW(kFolderVariable, folder.data(), static_cast<DWORD>(folder.size())));
    return folder.empty() ? folder : folder + L'\\';
}

bool isMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

Status readResource(std::uint16_t productType, std::span<char> text, std::uint32_t& size) {
    const auto* const entry = std::find_if(std::begin(kResources), std::end(kResources),
                                           [&](auto& r) { return r.productType == productType; });
    if (entry == std::end(kResources)) return failWith(ERROR_RESOURCE_NAME_NOT_FOUND);
    const auto module = static_cast<HMODULE>(moduleHandle());
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(entry->number), kResourceType);
    if (resource == nullptr) return failWithSystemError(ERROR_RESOURCE_NAME_NOT_FOUND);
    const HGLOBAL loaded = LoadResource(module, resource);
    if (loaded == nullptr) return failWithSystemError(ERROR_RESOURCE_DATA_NOT_FOUND);
    const DWORD bytes = SizeofResource(module, resource);
    const auto* const data = static_cast<const char*>(LockResource(loaded));
    if (bytes == 0 || data == nullptr) return failWithSystemError(ERROR_RESOURCE_DATA_NOT_FOUND);
    if (bytes >= text.size()) return failWith(error::kOutOfMemory);
    std::copy_n(data, bytes, text.begin());
    size = bytes;
    return Status();
}

}  // namespace

Status readFirmwareText(std::uint16_t productType, std::span<char> text, std::uint32_t& size) {
    if (const std::wstring folder = namedFolder(); !folder.empty()) {
        const File file(folder + std::to_wstring(productType) + L".hex");
        if (file.isOpen()) return file.read(text, size);
        if (!isMissing(GetLastError())) return failWithSystemError(ERROR_ACCESS_DENIED);
    }
    return readResource(productType, text, size);
}

}  // namespace tavra::platform
