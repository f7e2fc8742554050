#include "capture/read_engine.h"

#include <new>

namespace tavra {

CReadEngine::CReadEngine(const platform::UsbAccess& usb, TavraUsbDevice device, const FrameLayout& layout,
                         std::uint32_t maximumTransfer)
    : usb_(usb),
      device_(device),
      sizes_(readSizes(layout, maximumTransfer).value_or(ReadSizes{})),
      queue_(layout, sizes_.blockSize, stop_),
      memory_(usb, device, sizes_.bufferSize) {
    if (!makeReads()) reads_.clear();
}

// The event of a read is needed only while it is in flight, so there are as many as reads in flight and one
// more: the next is started before the last result is taken. A record for every slot would use up the
// process's descriptors with large frames.
bool CReadEngine::makeReads() {
    if (sizes_.slotCount == 0) return false;
    try {
        reads_.resize(std::size_t{sizes_.firstDepth} + 1);
        for (auto& read : reads_) {
            read = std::make_unique<PendingRead>();
            if (!read->event.valid()) return false;
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool CReadEngine::ready() const {
    return !reads_.empty() && memory_.data() != nullptr && stop_.valid() && queue_.valid();
}

Status CReadEngine::start() {
    if (!ready()) return Status(error::kOutOfMemory);
    stop_.reset();
    status_ = 0;
    queue_.restartWriting();
    return thread_.start("tavra-read", platform::ThreadPriority::TimeCritical, [this] { readThread(); });
}

void CReadEngine::readThread() {
    ReadLoop loop({usb_, device_, sizes_, memory_.data(), reads_, queue_, stop_});
    status_ = loop.run();
}

void CReadEngine::stop() {
    stop_.set();
    thread_.join();
}

}  // namespace tavra
