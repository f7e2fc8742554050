#include "media/jpeg/color_component.h"

namespace tavra {

JpegError CJPEGColorComponent::Select(unsigned quantTable, unsigned dcTable, unsigned acTable) {
    constexpr unsigned kLargest = 4;
    if (quantTable > kLargest || dcTable > kLargest || acTable > kLargest) return JpegError::WrongParameters;
    quantSelector = quantTable;
    dcSelector = dcTable;
    acSelector = acTable;
    return JpegError::None;
}

}  // namespace tavra
