// Tells ThreadSanitizer what umockdev hides from it: that an ioctl orders what its caller did before with
// what the device side does, and that with what the caller does after. Without effect in other builds.
//
// The test program has an ioctl of its own, which the loader puts in front of umockdev's (ioctl_order.cpp).
#pragma once

namespace tavra::test {

void beginDeviceSide();
void endDeviceSide();

}  // namespace tavra::test
