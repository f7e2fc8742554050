#include "libusb/error_map.h"

#include "error_numbers.h"

namespace tavra::usbd {

ErrorCode errorFromResult(int result) {
    if (result >= 0) return error::kNone;
    switch (result) {
        case LIBUSB_ERROR_INVALID_PARAM: return error::kInvalidArgument;
        case LIBUSB_ERROR_ACCESS: return error::kDeviceGone;  // the same number, 5: access denied
        case LIBUSB_ERROR_NO_DEVICE: return error::kDeviceNotConnected;
        case LIBUSB_ERROR_NOT_FOUND: return error::kFileNotFound;
        case LIBUSB_ERROR_BUSY: return error::kBusy;
        case LIBUSB_ERROR_TIMEOUT: return error::kTimedOut;
        case LIBUSB_ERROR_OVERFLOW: return error::kDataError;
        case LIBUSB_ERROR_PIPE: return error::kBadCommand;
        case LIBUSB_ERROR_INTERRUPTED: return error::kOperationAborted;
        case LIBUSB_ERROR_NO_MEM: return error::kOutOfMemory;
        case LIBUSB_ERROR_NOT_SUPPORTED: return error::kNotSupported;
        default: return error::kDeviceNotFunctioning;
    }
}

ErrorCode errorFromBulkStatus(libusb_transfer_status status) {
    switch (status) {
        case LIBUSB_TRANSFER_COMPLETED: return error::kNone;
        case LIBUSB_TRANSFER_CANCELLED: return error::kOperationAborted;
        case LIBUSB_TRANSFER_TIMED_OUT: return error::kTimedOut;
        case LIBUSB_TRANSFER_STALL: return error::kDeviceNotFunctioning;
        case LIBUSB_TRANSFER_NO_DEVICE: return error::kDeviceNotConnected;
        case LIBUSB_TRANSFER_OVERFLOW:
        case LIBUSB_TRANSFER_ERROR: return error::kDataError;
    }
    return error::kDeviceNotFunctioning;
}

ErrorCode errorFromControlStatus(libusb_transfer_status status) {
    return status == LIBUSB_TRANSFER_STALL ? error::kBadCommand : errorFromBulkStatus(status);
}

}  // namespace tavra::usbd
