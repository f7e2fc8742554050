// Windows error numbers that the USB access library gives besides those of base/error_codes.h.
#pragma once

#include <cstdint>

#include "base/error_codes.h"

namespace tavra::usbd::error {

using namespace tavra::error;

inline constexpr std::uint32_t kFileNotFound = 2;  // no device has this path
inline constexpr std::uint32_t kBadHandle = 6;     // no device has this handle
inline constexpr std::uint32_t kInvalidData = 13;  // text that is not what it should be
inline constexpr std::uint32_t kNotReady = 21;
inline constexpr std::uint32_t kBufferTooSmall = 122;
inline constexpr std::uint32_t kNoMoreItems = 259;     // no device at this index
inline constexpr std::uint32_t kShortTransfer = 1117;  // the device took or gave fewer bytes than asked

}  // namespace tavra::usbd::error
