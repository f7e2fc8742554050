// One opening of a virtual camera.
#pragma once

#include <atomic>
#include <memory>

#include "camera.h"
#include "device.h"

namespace tavra::usbd {

class VirtualDevice final : public Device {
  public:
    explicit VirtualDevice(std::shared_ptr<VirtualCamera> camera);
    ~VirtualDevice() override;

    ErrorCode configDescriptor(std::span<std::uint8_t> buffer, std::uint32_t& length) override;
    std::uint32_t functionAddress() const override;
    std::uint32_t openCount() const override;
    ErrorCode checkConfiguration(std::uint32_t& word0, std::uint32_t& word1) override;
    void driverVersion(std::span<std::uint32_t, 4> words) const override;
    ErrorCode controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                              std::uint32_t& transferred) override;
    ErrorCode beginRead() override;
    ErrorCode endRead() override;
    bool canResumeRead() const override;
    ErrorCode startRead(void* buffer, std::uint32_t size, TavraUsbRead& read) override;
    ErrorCode readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) override;
    void* allocReadMemory(std::size_t size) override;
    void freeReadMemory(void* memory, std::size_t size) override;
    ErrorCode deviceControl(std::uint32_t code) override;

  private:
    const std::shared_ptr<VirtualCamera> camera_;
    const std::uint32_t powerUp_;
    // The stream is the camera's: an opening that did not read leaves another's reads alone when it is
    // closed.
    std::atomic<bool> reads_ = false;
};

}  // namespace tavra::usbd
