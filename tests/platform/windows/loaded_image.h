// Looks into a library's image in memory: its sections and the names it exports.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavra::test {

class LoadedImage {
  public:
    explicit LoadedImage(HMODULE module) : base_(reinterpret_cast<const std::uint8_t*>(module)) {}

    // Sections that are shared between processes.
    std::vector<IMAGE_SECTION_HEADER> sharedSections() const {
        std::vector<IMAGE_SECTION_HEADER> found;
        const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers());
        for (int i = 0; i < headers()->FileHeader.NumberOfSections; ++i, ++section) {
            if ((section->Characteristics & IMAGE_SCN_MEM_SHARED) != 0) found.push_back(*section);
        }
        return found;
    }

    template <typename T>
    T* at(std::uint32_t offset) const {
        return reinterpret_cast<T*>(const_cast<std::uint8_t*>(base_ + offset));
    }

    // The word of the first shared section.
    volatile std::int64_t* sharedWord() const {
        const auto sections = sharedSections();
        return sections.empty() ? nullptr : at<volatile std::int64_t>(sections.front().VirtualAddress);
    }

    std::vector<std::string> exportedNames() const {
        std::vector<std::string> names;
        const auto& entry = headers()->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
        if (entry.Size == 0) return names;
        const auto* directory = at<IMAGE_EXPORT_DIRECTORY>(entry.VirtualAddress);
        const auto* offsets = at<std::uint32_t>(directory->AddressOfNames);
        for (std::uint32_t i = 0; i < directory->NumberOfNames; ++i) names.emplace_back(at<char>(offsets[i]));
        return names;
    }

  private:
    const IMAGE_NT_HEADERS* headers() const {
        const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base_);
        return at<IMAGE_NT_HEADERS>(static_cast<std::uint32_t>(dos->e_lfanew));
    }

    const std::uint8_t* base_;
};

}  // namespace tavra::test
