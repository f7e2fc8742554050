// Intel HEX text to a memory image. Pure function; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "device.h"

namespace tavra::usbd {

// Fills `image` with the bytes of the text and `mask`, of the same size, with 1 where the text has a byte;
// both are 0 elsewhere. `length`: one more than the highest address.
//
// All record types are read: 00 data, 01 end, 02 segment and 04 linear base address, 03 and 05 start address
// (which place nothing). Digits may be in either case; blanks and line ends may stand between records and
// after the end record, NULs after the end record.
//
// 13: the text is not Intel HEX (anything else between records, digits missing, a checksum that is wrong, a
// record of an unknown type or a length that its type does not have, an address given twice, no end record,
// text behind it). 122: a byte lies beyond the image. After a failure the contents of image and mask mean
// nothing.
ErrorCode parseHexImage(std::string_view text, std::span<std::uint8_t> image, std::span<std::uint8_t> mask,
                        std::uint32_t& length);

}  // namespace tavra::usbd
