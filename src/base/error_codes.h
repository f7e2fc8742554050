// The error codes of the public interface as typed constants.
#pragma once

#include <cstdint>

#include "tavra/tavra_types.h"

namespace tavra::error {

inline constexpr std::uint32_t kNone = TAVRA_ERROR_NONE;
inline constexpr std::uint32_t kDeviceGone = TAVRA_ERROR_DEVICE_GONE;
inline constexpr std::uint32_t kAccessDenied = 5;
inline constexpr std::uint32_t kOutOfMemory = TAVRA_ERROR_OUT_OF_MEMORY;
inline constexpr std::uint32_t kInvalidData = 13;  // a file that is not what it should be
inline constexpr std::uint32_t kDataError = 23;    // a read came back damaged
inline constexpr std::uint32_t kWriteFault = TAVRA_ERROR_WRITE_FAULT;
inline constexpr std::uint32_t kDeviceNotFunctioning = 31;  // the device is settling, or failed
inline constexpr std::uint32_t kEndOfFile = 38;
inline constexpr std::uint32_t kNotSupported = TAVRA_ERROR_NOT_SUPPORTED;
inline constexpr std::uint32_t kInvalidArgument = TAVRA_ERROR_INVALID_ARGUMENT;
inline constexpr std::uint32_t kOpenFailed = TAVRA_ERROR_OPEN_FAILED;
inline constexpr std::uint32_t kModuleNotFound = TAVRA_ERROR_MODULE_NOT_FOUND;
inline constexpr std::uint32_t kOperationNotFound = TAVRA_ERROR_OPERATION_NOT_FOUND;
inline constexpr std::uint32_t kDiskFull = 112;
inline constexpr std::uint32_t kInsufficientBuffer = 122;  // converted text does not fit
inline constexpr std::uint32_t kInvalidName = 123;         // a file's name that the system cannot express
inline constexpr std::uint32_t kFileTooLarge = 223;
inline constexpr std::uint32_t kTimeout = TAVRA_ERROR_TIMEOUT;
inline constexpr std::uint32_t kNotOwner = 288;  // of a lock: another thread has it, or none
inline constexpr std::uint32_t kOperationAborted = 995;
inline constexpr std::uint32_t kIoIncomplete = 996;
inline constexpr std::uint32_t kIoPending = 997;
inline constexpr std::uint32_t kDeviceNotConnected = 1167;
inline constexpr std::uint32_t kInvalidWindowHandle = 1400;
inline constexpr std::uint32_t kWindowBusy = 1460;      // its thread did not come to it in time
inline constexpr std::uint32_t kNotEnoughQuota = 1816;  // a message queue is full
inline constexpr std::uint32_t kNoCamera = TAVRA_ERROR_NO_CAMERA;
inline constexpr std::uint32_t kInUse = TAVRA_ERROR_IN_USE;
inline constexpr std::uint32_t kInvalidHandle = TAVRA_ERROR_INVALID_HANDLE;
inline constexpr std::uint32_t kTransferRunning = TAVRA_ERROR_TRANSFER_RUNNING;
inline constexpr std::uint32_t kControlTransfer = TAVRA_ERROR_CONTROL_TRANSFER;
inline constexpr std::uint32_t kWindowExists = TAVRA_ERROR_WINDOW_EXISTS;
inline constexpr std::uint32_t kNoWindow = TAVRA_ERROR_NO_WINDOW;
inline constexpr std::uint32_t kRecording = TAVRA_ERROR_RECORDING;
inline constexpr std::uint32_t kFileStream = TAVRA_ERROR_FILE_STREAM;
inline constexpr std::uint32_t kCodecMissing = TAVRA_ERROR_COMPRESSOR_A;
inline constexpr std::uint32_t kCodecRefuses = TAVRA_ERROR_COMPRESSOR_B;
inline constexpr std::uint32_t kCodecFile = TAVRA_ERROR_COMPRESSOR_C;
inline constexpr std::uint32_t kCodecCancelled = TAVRA_ERROR_COMPRESSOR_D;
inline constexpr std::uint32_t kFileName = TAVRA_ERROR_FILE_NAME;
inline constexpr std::uint32_t kReservedI2c = TAVRA_ERROR_RESERVED_I2C;
inline constexpr std::uint32_t kLegacyCamera = TAVRA_ERROR_LEGACY_CAMERA;

}  // namespace tavra::error
