// What is read from a camera when it is opened. On the thread that opens.
#pragma once

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Identity, capabilities, register pages, limits and scan record.
Status readDeviceInformation(TAVRA_COMMON_PARAM& camera);

// What a stream depends on: scan record, transfer bits, clock, exposure, camera-side mirror. At open, and
// again after a command that may have changed it.
Status readTransferState(TAVRA_COMMON_PARAM& camera);

}  // namespace tavra
