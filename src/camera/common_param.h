// The record behind a camera handle. The handle is its address; everything of a camera is owned here.
//
// This is the one place that names everything. Only api/, capture/ and camera/ itself include it; everybody
// else gets a narrow interface (IStatusWords, IHalvernRegMap, IRegionInfo, IExposureCamera).
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "camera/camera_info.h"
#include "camera/capability_words.h"
#include "camera/control_channel.h"
#include "camera/exposure_camera.h"
#include "camera/frame_feature.h"
#include "camera/image_buffer_set.h"
#include "camera/recording_slot.h"
#include "camera/register_map.h"
#include "capture/callback_list.h"
#include "capture/snapshot_request.h"
#include "control/average_pixel_value.h"
#include "display/preview_window.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "stages/noise_reduction.h"
#include "tavra/tavra_types.h"

namespace tavra {

class CLuminanceCtrlUSB;
class CWhiteBalanceCtrlUSB;
class IChromaSuppress;
class IColorInterpolation;
class IColorMatrix;
class IGamma;
class ISharpness;
class IFlip;
class IShadingCorrection;

// Made by an open, destroyed by Tavra_Close. Calls may come from any thread; plain fields are not locked, and
// the close must not run beside other calls on the same handle.
class TAVRA_COMMON_PARAM final : public IHalvernRegMap, public IExposureCamera, public IPreviewCamera {
  public:
    TAVRA_COMMON_PARAM();
    ~TAVRA_COMMON_PARAM();  // in a fixed order, see the definition
    TAVRA_COMMON_PARAM(const TAVRA_COMMON_PARAM&) = delete;
    TAVRA_COMMON_PARAM& operator=(const TAVRA_COMMON_PARAM&) = delete;

    // Registers of the pages, like Tavra_GetFPGAData2 and Tavra_SetFPGAData2 on selector 1: a failure is also
    // kept as last error, where a caller goes on without what it could not read.
    std::uint32_t Read(std::uint32_t address, void* buffer, std::uint16_t size) override;
    std::uint32_t Write(std::uint32_t address, const void* buffer, std::uint16_t size) override;

    // What exposure control works with.
    const CameraInfo& exposureIdentity() const override { return info; }
    const CapabilityWords& exposureCapabilities() const override { return capabilities; }
    IStatusWords& statusWords() override { return control; }
    ScanRecord scanRecord() const override { return geometry->scanRecord(); }
    Status readExposure(ExposureBlock& block) override { return readExposureBlock(control, block); }
    Status writeExposure(const ExposureBlock& block) override { return writeExposureBlock(control, block); }
    Status sendFrameTiming() override;

    // What the preview window works with.
    ImageSize previewImageSize() const override { return geometry->imageSize(); }
    std::uint32_t previewPixelFormat() const override { return geometry->previewPixelFormat; }
    bool previewIsRotated() const override;
    ImageBufferSet& previewImages(bool rotated) override { return rotated ? imagesB : imagesA; }
    Status postToReceiver(std::uint32_t message, std::uint64_t parameter) override;
    void notePreviewFailure(Status status) override { noteFailure(status); }

    // Makes exposure control for the geometry in place, with the settings that the camera has. What it could
    // not read only stays behind as last error.
    void makeExposureControl();
    // Exposure control reads the camera's settings again; success before it exists.
    Status reloadExposure();
    // Lines of the present exposure.
    Status exposureLines(std::uint32_t& lines);

    // False once the device is closed: every call then fails.
    bool deviceOpen() const { return control.device() != 0; }
    bool legacy() const { return isLegacyType(info.productType); }
    // A capability bit; false on the oldest types, whose words are all zero.
    bool can(unsigned word, unsigned bit) const { return capabilities.bit(word, bit); }
    // The camera does the white balance itself: gains and mode are its own.
    bool hasHardwareWhiteBalance() const { return can(1, 8); }
    // Tavra_HasFunction's answer, for a valid record.
    bool hasFunction(std::uint32_t number) const;
    // The stored colour array after what the camera mirrors.
    std::uint16_t colorArrayInForce() const;

    // Makes the white balance control, at open, when the device information has been read.
    void makeWhiteBalance();

    // Whether a capture thread runs. A thread that has ended by itself is collected on the spot.
    bool transferRunning();

    // Gives the regions of the scan record to region composition, which is made when the camera first offers
    // two or more. Not while a stream runs. Throws std::bad_alloc.
    void setUpRegions();

    // Keeps the code of a failure for Tavra_GetLastError. Success changes nothing.
    void noteFailure(Status status) {
        if (!status.ok()) lastError = status.code();
    }

    // The device.
    ControlChannel control;
    std::array<char16_t, 1024> devicePath{};  // zero-terminated
    std::uint32_t userId = 0;                 // argument of Tavra_Open
    std::uint32_t functionAddress = 0;        // a byte

    // What the camera told at open.
    CameraInfo info;
    CapabilityWords capabilities;
    // The stored colour array: the identity block's at open, then what the application says.
    std::atomic<std::uint16_t> colorArray{0};
    std::uint32_t exposureBaseClockMHz = 100;
    std::uint32_t minimumExposureClock = 1426;
    std::array<std::uint16_t, 4> whiteBalanceWords{};  // payload of vendor request 35
    std::uint16_t maximumDigitalGain = 511;
    std::array<std::uint16_t, 4> maximumGains{640, 640, 640, 640};
    std::unique_ptr<CRegisterPageMap> registerPages;  // null on cameras that have none
    std::unique_ptr<CFrameFeature> geometry;
    std::uint32_t maximumTransferSize = 0;  // read at construction; nothing looks at it afterwards

    // Results.
    std::atomic<std::uint32_t> lastError{0};
    std::atomic<std::uint32_t> streamingFailure{0};  // written by the capture thread only

    // The stream.
    std::atomic<TavraWindow> receiver{nullptr};
    std::mutex transferMutex;  // one start or end of the stream at a time; held while waiting for the end
    std::mutex
        captureThreadMutex;  // start, collection and join of the thread; never held while waiting for its end
    platform::Thread captureThread;
    platform::Event stopEvent{platform::Event::Reset::Manual};
    std::atomic<bool> transferWanted{false};
    // Wanted from the end of the open on. They do not exist then only if memory ran out when they were
    // rebuilt for a new geometry: the next change tries again, a stream has no images to work into.
    bool buffersWanted = false;
    bool buffersExist = false;
    ImageBufferSet imagesA;  // unrotated
    ImageBufferSet imagesB;  // width and height exchanged
    std::atomic<std::uint8_t> displayRotation{0};
    SnapshotRequest rawSnapshot;
    SnapshotRequest previewSnapshot;
    CallbackList<TavraRawCallback> rawCallbacks;
    CallbackList<TavraPreviewBitmapCallback> previewBitmapCallbacks;
    CallbackList<TavraPreviewGDICallback> previewGdiCallbacks;

    // Settings of the chain that have no object of their own.
    std::atomic<std::uint8_t> interpolationMethod{3};
    std::uint8_t secondInterpolationByte = 3;
    std::atomic<std::uint8_t> mirrorMode{0};  // low nibble: software; high nibble: by the camera
    std::atomic<std::uint8_t> rotationMode{0};
    std::atomic<std::uint32_t> settingFileMode{0};  // which parts setting files leave alone

    // The stages, from the construction on.
    IColorMatrix* colorMatrix = nullptr;
    ISharpness* sharpness = nullptr;
    IGamma* gamma = nullptr;
    IColorInterpolation* colorInterpolation = nullptr;
    IFlip* flip = nullptr;
    IShadingCorrection* shadingCorrection = nullptr;
    IChromaSuppress* chromaSuppress = nullptr;
    CNoiseReduction noiseReduction;

    // Automatic control. The controls are there from the open on.
    CAveragePixelValue statistics;
    std::unique_ptr<CLuminanceCtrlUSB> exposure;
    std::unique_ptr<CWhiteBalanceCtrlUSB> whiteBalance;

    // A recording lasts no longer than the stream.
    RecordingSlot recording;

    // The preview window, whether there is one at the time or not. Closed before anything that it shows.
    PreviewWindow preview{*this, platform::windowSystem()};

  private:
    // The record without its stages. Behind it a failing constructor has something to destroy.
    explicit TAVRA_COMMON_PARAM(std::uint32_t transferSize);
};

}  // namespace tavra
