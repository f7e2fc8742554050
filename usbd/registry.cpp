#include "registry.h"

#include <utility>

#include "error_numbers.h"

namespace tavra::usbd {

Registry::Registry(std::vector<std::unique_ptr<DeviceSource>> sources) : sources_(std::move(sources)) {}

TavraUsbDevice Registry::openByIndex(std::uint32_t index, std::string* path, ErrorCode& error) {
    const std::lock_guard lock(sourcesMutex_);
    std::uint32_t first = 0;
    for (const auto& source : sources_) {
        const std::uint32_t count = source->enumerate();
        if (index - first < count) {
            std::unique_ptr<Device> device = source->open(index - first, error);
            if (!device) return 0;
            if (path != nullptr) *path = source->path(index - first);
            return enter(std::move(device));
        }
        first += count;
    }
    error = error::kNoMoreItems;
    return 0;
}

TavraUsbDevice Registry::openByPath(const std::string& path, ErrorCode& error) {
    const std::lock_guard lock(sourcesMutex_);
    error = error::kFileNotFound;
    for (const auto& source : sources_) {
        source->enumerate();
        ErrorCode sourceError = error::kNone;
        if (std::unique_ptr<Device> device = source->open(path, sourceError)) return enter(std::move(device));
        // A source that knows the path but cannot open it says more than one that does not know it.
        if (sourceError != error::kFileNotFound) error = sourceError;
    }
    return 0;
}

TavraUsbDevice Registry::enter(std::unique_ptr<Device> device) {
    const std::unique_lock lock(tableMutex_);
    table_.emplace(lastHandle_ + 1, std::move(device));
    return ++lastHandle_;
}

ErrorCode Registry::close(TavraUsbDevice handle) {
    std::shared_ptr<Device> device;
    {
        const std::unique_lock lock(tableMutex_);
        const auto entry = table_.find(handle);
        if (entry == table_.end()) return error::kBadHandle;
        device = std::move(entry->second);
        table_.erase(entry);
    }
    // A thread that waits for a read holds the device: only the end of the reads lets it go.
    device->endRead();
    return error::kNone;
}

std::shared_ptr<Device> Registry::find(TavraUsbDevice handle) const {
    const std::shared_lock lock(tableMutex_);
    const auto entry = table_.find(handle);
    return entry == table_.end() ? nullptr : entry->second;
}

}  // namespace tavra::usbd
