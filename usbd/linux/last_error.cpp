#include "last_error.h"

namespace tavra::usbd {
namespace {

thread_local std::uint32_t threadError = 0;

}  // namespace

void setLastError(std::uint32_t code) {
    threadError = code;
}

std::uint32_t lastError() {
    return threadError;
}

}  // namespace tavra::usbd
