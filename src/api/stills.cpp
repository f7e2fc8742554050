// Exports of still image files.
#include "media/still_image.h"

#include <algorithm>
#include <string>

#include "api/call.h"
#include "platform/text.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr std::size_t kNarrowNameLimit =
    259;  // characters of a wide buffer that a narrow name is converted into

}  // namespace

// By design: the last error becomes the save's result, also 0: the one call beside the geometry refresh that
// clears it.
TavraBool Tavra_SaveImageW(TavraHandle handle, uint32_t width, uint32_t height, uint32_t format,
                           const void* data, const TavraWChar* fileName, uint32_t quality) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        const Status saved = saveImage(width, height, format, data, fileName, quality);
        camera.lastError = saved.code();
        return saved;
    });
}

TavraBool Tavra_SaveImageA(TavraHandle handle, uint32_t width, uint32_t height, uint32_t format,
                           const void* data, const char* fileName, uint32_t quality) {
    std::u16string wide;
    const TavraBool valid = api::call(handle, [&](TAVRA_COMMON_PARAM&) {
        if (fileName == nullptr) return Status(error::kFileName);
        wide = platform::toWide(fileName);
        // A name that the buffer does not hold has lost its extension, or is another file's.
        return wide.size() < kNarrowNameLimit ? Status() : Status(error::kFileName);
    });
    if (valid == 0) return 0;
    return Tavra_SaveImageW(handle, width, height, format, data, wide.c_str(), quality);
}
