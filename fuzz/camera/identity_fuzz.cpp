// What a camera tells about itself: identity block (the first 64 bytes), capability words (the next 40), and
// a stored identity record (the rest).
#include <algorithm>
#include <cstdlib>
#include <span>
#include <vector>

#include "base/little_endian.h"
#include "camera/function_table.h"
#include "camera/identity_record.h"
#include "camera/product_names.h"

using namespace tavra;

namespace {

// Cuts the next `size` bytes off, padded with zeros.
std::vector<std::uint8_t> take(std::span<const std::uint8_t>& rest, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    const std::size_t taken = std::min(size, rest.size());
    std::copy_n(rest.begin(), taken, bytes.begin());
    rest = rest.subspan(taken);
    return bytes;
}

// Buffers of exactly the size that is told, so that a byte too many shows.
void readText(const IdentityRecord& record) {
    for (const std::uint32_t size : {0u, 1u, 2u, 3u, 64u, 248u, 249u, 250u, 256u}) {
        std::vector<char> narrow(size);
        record.copyText(std::span<char>(narrow));
        std::vector<TavraWChar> wide((size + 1) / 2);
        record.copyText({wide.data(), size / 2}, size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::uint8_t> rest(data, size);
    const std::vector<std::uint8_t> block = take(rest, CameraInfo::kReplySize);
    const CameraInfo info =
        CameraInfo::parse(std::span<const std::uint8_t, CameraInfo::kReplySize>(block.data(), 64));
    if (info.maximumWidth == 0 || info.maximumHeight == 0) std::abort();

    const std::vector<std::uint8_t> words = take(rest, 2 * CapabilityWords::kCount);
    CapabilityWords capabilities;
    for (std::size_t i = 0; i < CapabilityWords::kCount; ++i) capabilities.words[i] = loadLe16(&words[2 * i]);
    for (std::uint32_t number = 0; number < 400; ++number)
        hasFunction(info, capabilities, info.colorArray, number);
    hasFunction(info, capabilities, info.colorArray, loadLe32(words.data()));
    if (productName(info, capabilities.samePid()).empty()) std::abort();

    IdentityRecord record;
    const std::vector<std::uint8_t> stored = take(rest, IdentityRecord::kSize);
    std::copy(stored.begin(), stored.end(), record.bytes().begin());
    readText(record);
    return 0;
}
