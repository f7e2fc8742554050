#include "error_text.h"

#include <cstdio>

#include "tavra/tavra_types.h"

namespace tavra::tool {
namespace {

struct Entry {
    std::uint32_t code;
    ExitCode exitCode;
    const char* text;
};

constexpr const char* kMovieNotOpened =
    "the movie could not be opened for writing; check the folder and its permissions, and whether a "
    "recording or conversion has the file";

constexpr Entry kEntries[] = {
    {2, ExitCode::Failed, "there is no such file or setting"},
    {3, ExitCode::Failed, "there is no such folder"},
    {TAVRA_ERROR_DEVICE_GONE, ExitCode::CameraLost,
     "the camera went away (unplugged, or no right to use it); plug it in again, or run `tavra doctor`"},
    {TAVRA_ERROR_OUT_OF_MEMORY, ExitCode::Failed, "out of memory"},
    {31, ExitCode::CameraLost, "the camera stopped answering; plug it in again"},
    {TAVRA_ERROR_WRITE_FAULT, ExitCode::Failed, "the file could not be written whole; is the disk full?"},
    {TAVRA_ERROR_NOT_SUPPORTED, ExitCode::Failed, "not supported"},
    {TAVRA_ERROR_INVALID_ARGUMENT, ExitCode::Failed,
     "a value is out of range, or this camera does not have the capability"},
    {13, ExitCode::Failed, "the file has another form, or is for another camera type"},
    {112, ExitCode::Failed, "the disk is full"},
    {122, ExitCode::Failed, "the name is too long"},
    {170, ExitCode::Failed, "another program keeps the stored settings busy; end it, or try again"},
    {206, ExitCode::Failed, "the name is too long"},
    {1009, ExitCode::Failed,
     "the stored settings are damaged, or not this library's; move settings.db in the folder "
     "tavra of the configuration folder out of the way"},
    {1306, ExitCode::Failed, "the stored settings are those of a newer version"},
    {TAVRA_ERROR_OPEN_FAILED, ExitCode::Failed,
     "the file could not be opened; check the folder and its permissions"},
    {TAVRA_ERROR_MODULE_NOT_FOUND, ExitCode::NoCamera,
     "the USB access library (libtavrausbd.so.1) was not found; install it, or name it with "
     "TAVRA_USBD=/path"},
    {TAVRA_ERROR_OPERATION_NOT_FOUND, ExitCode::NoCamera,
     "the USB access library lacks an operation; it is not one, or of another version"},
    {223, ExitCode::Failed, "the file has reached the largest size that its file system takes"},
    {TAVRA_ERROR_TIMEOUT, ExitCode::TimedOut,
     "no frame came in time; is the camera waiting for a trigger, or the exposure longer than --timeout?"},
    {TAVRA_ERROR_NO_CAMERA, ExitCode::NoCamera,
     "no camera found; plug one in, run `tavra doctor`, or try one in memory with --virtual bayer"},
    {TAVRA_ERROR_IN_USE, ExitCode::NoCamera, "the camera is in use by another program; close that first"},
    {TAVRA_ERROR_INVALID_HANDLE, ExitCode::Failed, "the camera is not open"},
    {TAVRA_ERROR_TRANSFER_RUNNING, ExitCode::Failed, "not possible while the camera streams"},
    {TAVRA_ERROR_CONTROL_TRANSFER, ExitCode::Failed, "the camera refused a request or did not answer it"},
    {TAVRA_ERROR_WINDOW_EXISTS, ExitCode::Failed, "not possible while a preview window exists"},
    {TAVRA_ERROR_NO_WINDOW, ExitCode::Failed, "there is no preview window"},
    {TAVRA_ERROR_RECORDING, ExitCode::Failed, "not possible while a recording runs"},
    {TAVRA_ERROR_FILE_STREAM, ExitCode::Failed, kMovieNotOpened},
    {TAVRA_ERROR_COMPRESSOR_A, ExitCode::Failed, "no codec of this kind is installed"},
    {TAVRA_ERROR_COMPRESSOR_B, ExitCode::Failed, "the codec does not take pictures of this kind"},
    {TAVRA_ERROR_COMPRESSOR_C, ExitCode::Failed, kMovieNotOpened},
    {TAVRA_ERROR_COMPRESSOR_D, ExitCode::Failed, "no codec was chosen"},
    {TAVRA_ERROR_FILE_NAME, ExitCode::Failed,
     "the file name has no known ending; images end in .png, .jpg, .tif, .bmp or .raw, movies in "
     ".avi or .smf"},
    {TAVRA_ERROR_RESERVED_I2C, ExitCode::Failed, "I2C address 0x51 is reserved"},
    {TAVRA_ERROR_LEGACY_CAMERA, ExitCode::Failed, "this camera is too old for it"},
};

const Entry* find(std::uint32_t code) {
    for (const Entry& entry : kEntries) {
        if (entry.code == code) return &entry;
    }
    return nullptr;
}

std::string number(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, code >= 0xE0000000 ? "0x%X" : "%u", code);
    return text;
}

}  // namespace

std::string errorText(std::uint32_t code) {
    const Entry* const entry = find(code);
    return (entry != nullptr ? entry->text : "the system reports an error") + std::string(" (") +
           number(code) + ")";
}

ExitCode exitCodeFor(std::uint32_t code) {
    const Entry* const entry = find(code);
    return entry != nullptr ? entry->exitCode : ExitCode::Failed;
}

Failure failure(const std::string& what, std::uint32_t code) {
    return Failure(what + ": " + errorText(code), exitCodeFor(code));
}

}  // namespace tavra::tool
