// A virtual camera: a device that exists only in memory. It lives as long as its name stands in the list of
// virtual cameras, or an opening of it does; what a host has set stays from one opening to the next, as with
// a camera that keeps its power.
//
// Any operation, any thread. A control transfer runs under the camera's mutex. The stream's thread takes the
// mutex only to look at the settings; the camera calls the stream with its mutex held, never the other way
// round.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "camera_state.h"
#include "device.h"
#include "model.h"
#include "stream.h"

namespace tavra::usbd {

class VirtualCamera final : private FrameMaker, private CameraEvents {
  public:
    VirtualCamera(Model model, std::string path);

    const Model& model() const { return model_; }
    const std::string& path() const { return path_; }

    // Counts an enumeration: true when the camera is on the bus.
    bool look();
    bool present() const;

    // An opening begins: the number of the power-up that it belongs to. Each needs a detach.
    std::uint32_t attach();
    void detach();
    std::uint32_t openCount() const;

    // The operations of an opening; `powerUp` is what attach gave. One of an earlier power-up finds its
    // device gone.
    ErrorCode controlTransfer(std::uint32_t powerUp, const ControlSetup& setup, std::span<std::uint8_t> data,
                              std::uint32_t& transferred);
    ErrorCode checkConfiguration(std::uint32_t powerUp);
    ErrorCode deviceControl(std::uint32_t powerUp, std::uint32_t code);
    ErrorCode beginRead(std::uint32_t powerUp);
    void endRead(std::uint32_t powerUp);
    ErrorCode startRead(std::uint32_t powerUp, void* buffer, std::uint32_t size, TavraUsbRead& read);
    ErrorCode readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait);

  private:
    // FrameMaker
    std::shared_ptr<const FrameBytes> makeFrame(std::uint32_t index, std::chrono::nanoseconds time,
                                                std::chrono::nanoseconds& period) override;
    void vanish() override;
    // CameraEvents
    void triggeredChanged(bool triggered) override { stream_.setTriggered(triggered); }
    void trigger() override { stream_.trigger(); }
    void clearBuffer() override { stream_.clear(); }
    void resetCounter() override { stream_.resetCounter(); }

    ErrorCode gone(std::uint32_t powerUp) const;
    bool isDue(const std::vector<ControlFault>& faults, const ControlSetup& setup) const;
    void leaveBus(std::uint32_t looksAway);
    void start();

    const Model model_;
    const std::string path_;

    mutable std::mutex mutex_;
    Memories memories_;
    bool hasFirmware_;
    std::optional<CameraState> state_;  // made when the stream is there
    bool present_ = true;
    bool returns_ = false;
    std::uint32_t looksAway_ = 0;  // enumerations that will still miss it
    std::uint32_t powerUp_ = 1;
    std::uint32_t openings_ = 0;
    std::uint32_t settleLeft_, unconfiguredLeft_;
    std::uint32_t controlTransfers_ = 0;
    std::array<std::uint32_t, 256> timesAsked_{};  // by request

    bool settingsChanged_ = true;  // since the last frame
    std::size_t lightStep_ = 0;

    // The stream's thread alone.
    Renderer renderer_;
    std::chrono::nanoseconds period_{};

    Stream stream_;  // the last member: its thread ends before anything that it uses
};

}  // namespace tavra::usbd
