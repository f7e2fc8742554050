// Runs exposure control and white balance until both have come to rest.
#pragma once

#include <string>
#include <vector>

#include "camera.h"
#include "progress.h"
#include "stream_session.h"

namespace tavra::tool {

struct Settled {
    bool exposure = false;
    bool whiteBalance = false;  // also on a camera without
    double seconds = 0;
    std::string state;  // what they came to

    bool both() const { return exposure && whiteBalance; }
    // "settled in 2.3 s: ...", or what had not within the time.
    std::string text() const;
};

// Whether --set asks for a white balance by hand.
bool leavesWhiteBalance(const std::vector<std::string>& assignments);

// On a running stream, at most for so many seconds. Both controls are off afterwards, with what they found in
// force. Throws Failure when the stream ends, is interrupted, or sends frames that the controls cannot
// measure.
Settled settleControls(const Camera& camera, const StreamSession& stream, bool balance, double limitSeconds,
                       LiveLine& live);

}  // namespace tavra::tool
