// Opening a camera of the oldest types that came up without firmware: it is loaded and opened again.
//
// Application threads.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// The camera runs on its loader only: one of the oldest types, with the firmware revision that says so.
bool lacksFirmware(const TAVRA_COMMON_PARAM& camera);

// Loads the image of its type into a camera, which then leaves the bus. A failure has the system's code, or
// that of the USB access library.
Status loadFirmware(const TAVRA_COMMON_PARAM& camera);

// One round: loads, closes and opens again. A load that works adds one to `loads`, one that fails leaves its
// code in the global last error. Null: the camera did not open again.
TAVRA_COMMON_PARAM* loadAndOpenAgain(TAVRA_COMMON_PARAM* camera, std::uint32_t userId, std::uint32_t& loads);

// openByUserId, and rounds as long as the camera lacks firmware. Adds to `loads`.
TAVRA_COMMON_PARAM* openWithFirmware(std::uint32_t userId, std::uint32_t& loads);

}  // namespace tavra
