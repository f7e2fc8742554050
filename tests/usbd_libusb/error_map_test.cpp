#include "libusb/error_map.h"

#include <gtest/gtest.h>

namespace tavra::usbd {
namespace {

TEST(ErrorMap, EveryResultOfLibusbHasItsWindowsNumber) {
    EXPECT_EQ(errorFromResult(LIBUSB_SUCCESS), 0u);
    EXPECT_EQ(errorFromResult(18), 0u) << "a count of bytes is a success";
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_IO), 31u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_INVALID_PARAM), 87u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_ACCESS), 5u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_NO_DEVICE), 1167u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_NOT_FOUND), 2u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_BUSY), 170u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_TIMEOUT), 121u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_OVERFLOW), 23u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_PIPE), 22u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_INTERRUPTED), 995u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_NO_MEM), 8u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_NOT_SUPPORTED), 50u);
    EXPECT_EQ(errorFromResult(LIBUSB_ERROR_OTHER), 31u);
    EXPECT_EQ(errorFromResult(-1000), 31u) << "a result that a later libusb may have";
}

TEST(ErrorMap, EveryStatusOfABulkReadHasItsWindowsNumber) {
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_COMPLETED), 0u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_ERROR), 23u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_TIMED_OUT), 121u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_CANCELLED), 995u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_STALL), 31u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_NO_DEVICE), 1167u);
    EXPECT_EQ(errorFromBulkStatus(LIBUSB_TRANSFER_OVERFLOW), 23u);
}

TEST(ErrorMap, AStalledControlRequestIsARefusalAndNotAFailureOfTheDevice) {
    EXPECT_EQ(errorFromControlStatus(LIBUSB_TRANSFER_STALL), 22u);
    EXPECT_EQ(errorFromControlStatus(LIBUSB_TRANSFER_COMPLETED), 0u);
    EXPECT_EQ(errorFromControlStatus(LIBUSB_TRANSFER_TIMED_OUT), 121u);
    EXPECT_EQ(errorFromControlStatus(LIBUSB_TRANSFER_NO_DEVICE), 1167u);
}

}  // namespace
}  // namespace tavra::usbd
