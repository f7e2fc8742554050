// What of usb_access.h each system does in its own way. For usb_access.cpp, which calls them one at a time.
#pragma once

#include "platform/usb_access.h"

namespace tavra::platform {

// Loads the library from where the system has it. Null: it cannot be loaded.
void* openUsbLibrary();
void closeUsbLibrary(void* library);

// Fills in what the library exports. False: an operation that must exist is missing.
bool lookUpUsbOperations(void* library, UsbAccess& operations);

}  // namespace tavra::platform
