#include "camera/hdr.h"

#include <algorithm>

#include "camera/common_param.h"

namespace tavra {
namespace {

constexpr unsigned kTypeWord = 18;
constexpr std::uint32_t kWord = 4;  // bytes of a parameter, and of the size in front of them

// Bytes of all parameters.
Status readParameterBytes(TAVRA_COMMON_PARAM& camera, std::uint32_t& bytes) {
    if (hdrType(camera) == 0) return Status(error::kInvalidArgument);
    std::uint32_t block = 0;
    TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kHdr, 0, block));
    bytes = block > kWord ? block - kWord : 0;
    return Status();
}

}  // namespace

std::uint32_t hdrType(const TAVRA_COMMON_PARAM& camera) {
    return camera.registerPages ? camera.capabilities.word(kTypeWord) & 0xFFu : 0;
}

Status getHdrParameters(TAVRA_COMMON_PARAM& camera, std::uint32_t* parameters, std::uint32_t& size) {
    if (parameters != nullptr && size % kWord != 0) return Status(error::kInvalidArgument);
    std::uint32_t bytes = 0;
    TAVRA_RETURN_IF_ERROR(readParameterBytes(camera, bytes));
    if (parameters == nullptr) {
        size = bytes;
        return Status();
    }
    size = std::min(size, bytes);
    for (std::uint32_t i = 0; i < size / kWord; ++i) {
        TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kHdr, kWord * (i + 1), parameters[i]));
    }
    return Status();
}

Status setHdrParameters(TAVRA_COMMON_PARAM& camera, const std::uint32_t* parameters, std::uint32_t size) {
    if (parameters == nullptr || size % kWord != 0) return Status(error::kInvalidArgument);
    std::uint32_t bytes = 0;
    TAVRA_RETURN_IF_ERROR(readParameterBytes(camera, bytes));
    if (size > bytes) return Status(error::kInvalidArgument);
    for (std::uint32_t i = 0; i < size / kWord; ++i) {
        TAVRA_RETURN_IF_ERROR(camera.registerPages->write(page::kHdr, kWord * (i + 1), parameters[i]));
    }
    return Status();
}

}  // namespace tavra
