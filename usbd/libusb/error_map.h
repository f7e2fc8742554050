// From libusb's results to the error numbers of tavra_usbd.h. Pure functions, any thread.
//
// | libusb                       | number | meaning there |
// |------------------------------|--------|--------------------------------------------------------------------|
// | result SUCCESS               | 0      | | | result IO, OTHER             | 31     | device not
// functioning: it settles, or it failed                   | | result INVALID_PARAM         | 87     |
// argument out of range                                              | | result ACCESS                | 5 |
// no permission for the device's node                                | | result NO_DEVICE             | 1167
// | the device is gone                                                 | | result NOT_FOUND             | 2
// | no such device, interface or endpoint                              | | result BUSY                  | 170
// | somebody else has the interface                                    | | result TIMEOUT               | 121
// | the device did not answer in time                                  | | result OVERFLOW              | 23
// | the device sent more than was asked for                            | | result PIPE                  | 22
// | the device refused the request (control endpoint)                  | | result INTERRUPTED           | 995
// | given up from outside                                              | | result NO_MEM                | 8
// | no memory, or the kernel's budget for USB transfers is used up     | | result NOT_SUPPORTED         | 50
// | the platform cannot do it                                          | | any other result             | 31
// |                                                                    | | transfer COMPLETED           | 0
// | a short packet ends a transfer and is a success                    | | transfer CANCELLED           | 995
// | ended by endRead or by the close                                   | | transfer TIMED_OUT           | 121
// |                                                                    | | transfer STALL, bulk         | 31
// | the endpoint is halted; beginRead clears it                        | | transfer STALL, control      | 22
// | the device refused the request                                     | | transfer NO_DEVICE           |
// 1167   | the device is gone                                                 | | transfer OVERFLOW, ERROR |
// 23     | damaged on the wire, or more data than asked for                   |
//
// 996 (not complete yet) and 997 (in flight) come from the read queue, not from libusb.
#pragma once

#include <libusb.h>

#include "device.h"
#include "error_numbers.h"

namespace tavra::usbd {

namespace error {
inline constexpr ErrorCode kBadCommand = 22;  // the device refused the request
inline constexpr ErrorCode kTimedOut = 121;
inline constexpr ErrorCode kBusy = 170;  // somebody else has it
}  // namespace error

// `result`: LIBUSB_SUCCESS, a positive count (a success too) or one of libusb_error.
ErrorCode errorFromResult(int result);

ErrorCode errorFromBulkStatus(libusb_transfer_status status);
ErrorCode errorFromControlStatus(libusb_transfer_status status);

}  // namespace tavra::usbd
