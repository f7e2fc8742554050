// Reading the scan record from a camera whose replies are the input: of each reply two bytes tell how long it
// is.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>

#include "base/little_endian.h"
#include "camera/common_param.h"
#include "camera/geometry.h"

using namespace tavra;

namespace {

std::span<const std::uint8_t> replies;
unsigned requests = 0;

std::int32_t answer(TavraUsbDevice, std::uint8_t, std::uint8_t, std::uint16_t, std::uint16_t,
                    std::uint16_t length, void* data, std::uint32_t* transferred) {
    // Each further request asks for more than the last, up to the record's capacity.
    if (++requests > ScanRecord::kCapacity) std::abort();
    if (replies.size() < 2) return 0;
    const std::size_t told = loadLe16(replies.data());
    replies = replies.subspan(2);
    const std::size_t size = std::min({told, replies.size(), std::size_t{length}});
    std::memcpy(data, replies.data(), size);
    replies = replies.subspan(size);
    *transferred = static_cast<std::uint32_t>(size);
    return 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static platform::UsbAccess access{};
    access.controlTransfer = answer;
    replies = {data, size};
    requests = 0;

    TAVRA_COMMON_PARAM camera;
    camera.control.attach(access, 1);
    camera.geometry = std::make_unique<CFrameFeature>();
    if (!readScanInformation(camera).ok()) return 0;
    const std::uint32_t count = camera.geometry->GetMaxROICount();
    if (count < 1 || count > ScanRecord::kMaxRegions) std::abort();
    for (std::uint32_t index = 0; index < 40; ++index) {
        std::uint32_t enabled = 0, x = 0, y = 0, width = 0, height = 0;
        camera.geometry->GetROI(index, &enabled, &x, &y, &width, &height);
        if (enabled > 1) std::abort();
    }
    const ScanRecord record = camera.geometry->scanRecord();
    if (record.declaredLength() > ScanRecord::kCapacity || record.sentLength() > 255) std::abort();
    return 0;
}
