// The geometry of a camera: its scan record byte for byte, and the sizes, formats and clock that go with it.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

#include "base/region_info.h"
#include "base/status.h"

namespace tavra {

class CRegisterPageMap;
class IMultiROIImage;

// What vendor request 18 gives and takes. Offsets in bytes, numbers little endian.
class ScanRecord {
  public:
    static constexpr std::size_t kCapacity = 560;
    static constexpr std::uint32_t kShortLength = 64;
    static constexpr std::uint32_t kMaxRegions = 32;

    struct Region {
        std::uint32_t width = 0, height = 0, x = 0, y = 0;
    };

    // A zeroed record of 64 bytes, as sent before the first request.
    ScanRecord();

    std::array<std::uint8_t, kCapacity>& bytes() { return bytes_; }
    const std::array<std::uint8_t, kCapacity>& bytes() const { return bytes_; }

    // Length that the record declares: byte 0, or the word at byte 24 if byte 0 is 255; cut to the capacity.
    std::uint32_t declaredLength() const;
    // Whether so many bytes from the camera hold the whole record.
    bool completeWith(std::uint32_t received) const;
    // Bytes that are sent back to the camera.
    // By design: byte 0 as it stands, also where it is 255 and the record is longer.
    std::uint32_t sentLength() const { return bytes_[0]; }

    std::uint32_t width() const { return get32(6); }
    std::uint32_t height() const { return get32(10); }
    std::uint16_t scanMode() const { return get16(22); }
    std::uint16_t linesPerFrame() const { return get16(26); }
    std::uint16_t clocksPerLine() const { return get16(28); }
    std::uint16_t maximumGain() const { return get16(30); }
    std::uint16_t defaultGain() const { return get16(32); }
    std::uint16_t defaultDigitalGain() const { return get16(34); }
    std::uint32_t lastExposureClock() const { return get32(36); }  // clocks of an exposure line less one
    std::uint32_t shortExposureClocks() const { return get32(40); }
    std::uint32_t shortExposureLines() const { return get32(44); }
    std::uint32_t longExposureClocks() const { return get32(48); }
    std::uint32_t longExposureLines() const { return get32(52); }
    std::uint32_t regionCount() const;  // as offered, limited to 1 to 32

    // Scan modes 4 and 32 expose over more than one frame.
    bool exposesOverFrames() const { return scanMode() == 4 || scanMode() == 32; }

    // Region 0 is the main image; 1 to 31 follow. Any other index reads as zero, and is not written.
    Region region(std::uint32_t index) const;
    bool regionEnabled(std::uint32_t index) const;

    void setScanMode(std::uint16_t mode) { put16(22, mode); }
    void setRegion(std::uint32_t index, const Region& region);
    void setRegionEnabled(std::uint32_t index, bool enabled);
    // The exposure fields of a camera that does not fill them, from lines per frame and clocks per line.
    void deriveExposureLimits();

  private:
    std::uint16_t get16(std::size_t offset) const;
    std::uint32_t get32(std::size_t offset) const;
    void put16(std::size_t offset, std::uint16_t value);
    void put32(std::size_t offset, std::uint32_t value);

    std::array<std::uint8_t, kCapacity> bytes_{};
};

struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct CameraClock {
    std::uint32_t mode = 0;  // 0: the default
    std::uint32_t hz = 0;
};

// Owned by the handle record, made at open. The mutex guards scan record and clock: application threads and
// the capture thread meet here. The plain members change only while no capture thread exists.
class CFrameFeature final : public IRegionInfo {
  public:
    std::uint32_t GetMaxROICount() override;
    std::uint32_t GetROIMode() override;
    void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                std::uint32_t* width, std::uint32_t* height) override;
    std::uint32_t GetROIGroup() override;

    ScanRecord scanRecord() const;            // a copy
    void storeScanRecord(const ScanRecord&);  // as read from the camera

    // The size that consumers see: composed of the regions in use if there are two or more, else that of the
    // record.
    ImageSize imageSize() const;
    // Tells the composed size of the layout that region composition has just taken; none: fewer than two
    // regions are in use.
    void storeComposedSize(std::optional<ImageSize> size);
    // The size of what the camera sends.
    ImageSize rawSize() const;

    CameraClock clock() const;
    void storeClock(const CameraClock& clock);

    // Guards the scan record while it is changed and sent.
    std::mutex& mutex() const { return mutex_; }
    // Held while region composition takes its layout. Taken before the one above.
    std::mutex& layoutMutex() { return layoutMutex_; }
    ScanRecord& lockedRecord() { return record_; }  // the mutex must be held

    std::uint32_t enablePreviewFormats = 12;
    std::uint32_t rawDataSize = 0;  // bytes of a raw frame
    std::uint32_t transferBits = 1;
    std::uint32_t previewPixelFormat = 0;  // 1, 4 or 8
    CRegisterPageMap* registerPages = nullptr;
    // Region composition: null until the camera first offers two regions or more. The handle record makes and
    // releases it; the capture thread uses it while a stream runs, nobody changes it then.
    IMultiROIImage* multiRoi = nullptr;

  private:
    mutable std::mutex mutex_;
    ScanRecord record_;
    CameraClock clock_;
    std::optional<ImageSize> composedSize_;
    std::mutex layoutMutex_;
};

}  // namespace tavra
