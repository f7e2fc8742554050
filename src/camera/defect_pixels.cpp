#include "camera/defect_pixels.h"

#include <array>
#include <vector>

#include "camera/common_param.h"

namespace tavra {
namespace {

constexpr std::uint16_t kUsualCapacity = 64;

constexpr std::uint16_t kReadModeAddress = 78;
constexpr std::uint16_t kWriteModeAddress = 0x804E;

// Entries in the register pages: 32 bits each, x in the lower half.
constexpr std::uint32_t entryOffset(std::uint16_t index) {
    return 4 + 4 * std::uint32_t{index};
}

// Entries in the status words: two words each, x first. By design: the mark of a write is doubled with the
// index, and what of it passes 16 bits does not travel.
constexpr std::uint16_t kEntryIndex = 129;
constexpr std::uint16_t readEntryAddress(std::uint16_t index) {
    return static_cast<std::uint16_t>(index * 2);
}
constexpr std::uint16_t writeEntryAddress(std::uint16_t index) {
    return static_cast<std::uint16_t>((index | 0xC000) * 2);
}

Status refuseBeyondList(const TAVRA_COMMON_PARAM& camera, std::uint16_t index) {
    return index < defectPixelCapacity(camera) ? Status() : Status(error::kInvalidArgument);
}

// Writes every entry, those behind the found pixels as free ones. The first failure ends it.
Status writeList(TAVRA_COMMON_PARAM& camera, const std::vector<BrightPixel>& list, std::size_t found) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        const DefectPosition position = i < found ? DefectPosition{list[i].x, list[i].y} : DefectPosition{};
        TAVRA_RETURN_IF_ERROR(writeDefectPosition(camera, static_cast<std::uint16_t>(i), position));
    }
    return Status();
}

}  // namespace

std::uint16_t defectPixelCapacity(const TAVRA_COMMON_PARAM& camera) {
    if (camera.legacy() || !camera.can(3, 11)) return 0;
    const std::uint16_t told = camera.capabilities.word(5);
    return told != 0 ? told : kUsualCapacity;
}

Status getDefectPixelMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode) {
    mode = 0;
    if (defectPixelCapacity(camera) == 0) return Status();
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(kReadModeAddress, word));
    mode = word;
    return Status();
}

Status setDefectPixelMode(TAVRA_COMMON_PARAM& camera, std::uint16_t mode) {
    if (defectPixelCapacity(camera) == 0) return Status(error::kInvalidArgument);
    return camera.control.writeStatusWord(kWriteModeAddress, mode);
}

Status readDefectPosition(TAVRA_COMMON_PARAM& camera, std::uint16_t index, DefectPosition& position) {
    TAVRA_RETURN_IF_ERROR(refuseBeyondList(camera, index));
    if (camera.registerPages != nullptr) {
        std::uint32_t entry = 0;
        TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kDefectPixels, entryOffset(index), entry));
        position = {entry & 0xFFFF, entry >> 16};
        return Status();
    }
    std::array<std::uint16_t, 2> words{};
    TAVRA_RETURN_IF_ERROR(camera.control.readStatus(kEntryIndex, readEntryAddress(index), words));
    position = {words[0], words[1]};
    return Status();
}

Status writeDefectPosition(TAVRA_COMMON_PARAM& camera, std::uint16_t index, const DefectPosition& position) {
    TAVRA_RETURN_IF_ERROR(refuseBeyondList(camera, index));
    if (camera.registerPages != nullptr) {
        const std::uint32_t entry = (position.x & 0xFFFF) | position.y << 16;
        return camera.registerPages->write(page::kDefectPixels, entryOffset(index), entry);
    }
    const std::array words{static_cast<std::uint16_t>(position.x), static_cast<std::uint16_t>(position.y)};
    return camera.control.writeStatus(kEntryIndex, writeEntryAddress(index), words);
}

Status detectDefectPixels(TAVRA_COMMON_PARAM& camera, const DarkImage& image, std::uint16_t threshold) {
    std::vector<BrightPixel> list(defectPixelCapacity(camera));
    if (list.empty()) return Status(error::kInvalidArgument);
    if (image.pixels == nullptr && image.width != 0 && image.height != 0)
        return Status(error::kInvalidArgument);
    const std::size_t found = findBrightPixels(image, threshold, list);
    // By design: the camera takes over what could be written of the list, and only the outcome of that is the
    // result. An entry that could not be written shows in the last error.
    camera.noteFailure(writeList(camera, list, found));
    return camera.control.applyChange();
}

}  // namespace tavra
