// Frames of every class, size and layout of regions on their whole way to the preview, with settings of every
// stage. The input is read in order: what the camera is, its settings, then for each frame a few changes; its
// last bytes, over and over, are the pixels and whatever the camera is asked.
//
// Without threads: the frame path is driven as the capture thread does it. Frames lie in memory of exactly
// their size, so that a stage that passes the end is found.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/little_endian.h"
#include "base/pixel_format.h"
#include "camera/common_param.h"
#include "camera/geometry.h"
#include "capture/frame_path.h"
#include "control/luminance_ctrl_usb.h"
#include "control/white_balance_ctrl_usb.h"
#include "stages/chroma_suppress.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"

using namespace tavra;

namespace {

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(data, data + size) {}

    bool empty() const { return at_ >= bytes_.size(); }
    std::uint8_t byte() { return empty() ? 0 : bytes_[at_++]; }
    std::uint16_t word() {
        const std::uint8_t low = byte();
        return static_cast<std::uint16_t>(low | byte() << 8);
    }
    // Bytes that do not use the input up.
    void repeat(std::uint8_t* to, std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t tail = std::min<std::size_t>(bytes_.size(), 64);
            to[i] =
                tail == 0 ? 0 : static_cast<std::uint8_t>(bytes_[bytes_.size() - 1 - i % tail] + i / tail);
        }
    }

  private:
    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

const Input* asked = nullptr;
bool requestsFail = false;

std::int32_t answer(TavraUsbDevice, std::uint8_t type, std::uint8_t, std::uint16_t, std::uint16_t,
                    std::uint16_t length, void* data, std::uint32_t* transferred) {
    if (requestsFail) return 0;
    if ((type & 0x80) != 0) asked->repeat(static_cast<std::uint8_t*>(data), length);
    *transferred = length;
    return 1;
}

std::uint32_t lastError() {
    return 31;
}

constexpr std::uint32_t kCodes[] = {1,    2,    4,     8,         16,        0x10000,   0x20000, 32,
                                    64,   128,  256,   512,       0x100000,  0x200000,  1024,    2048,
                                    4096, 8192, 16384, 0x1000000, 0x2000000, 0x4000000, 0,       0x40000};
constexpr std::uint32_t kPreviewFormats[] = {1, 4, 8};

ScanRecord scanOf(Input& input) {
    ScanRecord record;
    record.setRegion(0, {input.byte() % 80u, input.byte() % 40u, 0, 0});
    record.setRegionEnabled(0, true);
    auto& bytes = record.bytes();
    for (std::size_t offset = 26; offset < 56; offset += 2) storeLe16(&bytes[offset], input.word());
    const std::uint32_t regions = input.byte() % 5;
    if (regions < 2) return record;
    storeLe16(&bytes[24], static_cast<std::uint16_t>(64 + 16 * (regions - 1)));
    bytes[0] = static_cast<std::uint8_t>(64 + 16 * (regions - 1));
    storeLe32(&bytes[56], regions);
    for (std::uint32_t i = 0; i < regions; ++i) {
        const std::uint8_t flags = input.byte();
        record.setRegionEnabled(i, (flags & 3) != 0);
        if (i > 0) {
            record.setRegion(
                i, {input.byte() % 40u, input.byte() % 40u, input.byte() % 120u, input.byte() % 80u});
        }
    }
    return record;
}

// The bytes that the frame takes when every row ends on a byte, less or more a little.
std::uint32_t rawSizeOf(const TAVRA_COMMON_PARAM& camera, Input& input) {
    const CFrameFeature& geometry = *camera.geometry;
    const std::uint32_t bits = transferBitsStored(geometry.transferBits);
    const ScanRecord record = geometry.scanRecord();
    std::uint32_t size = 0;
    for (std::uint32_t i = 0; i < record.regionCount(); ++i) {
        const ScanRecord::Region region = record.region(i);
        if (i == 0 || record.regionEnabled(i)) size += (region.width * bits + 7) / 8 * region.height;
    }
    const std::uint8_t change = input.byte();
    if (change < 64) return size >= change ? size - change : 0;
    return change < 96 ? size + change : size;
}

void setUp(TAVRA_COMMON_PARAM& camera, Input& input) {
    camera.info.productType = input.word();
    for (const unsigned word : {0u, 1u, 3u}) camera.capabilities.words[word] = input.word();
    camera.colorArray = input.byte() % 21;
    for (std::uint16_t& gain : camera.whiteBalanceWords) gain = input.word() % 1024;
    camera.geometry = std::make_unique<CFrameFeature>();
    CFrameFeature& geometry = *camera.geometry;
    geometry.transferBits = kCodes[input.byte() % std::size(kCodes)];
    geometry.previewPixelFormat = kPreviewFormats[input.byte() % std::size(kPreviewFormats)];
    geometry.storeScanRecord(scanOf(input));
    geometry.rawDataSize = rawSizeOf(camera, input);
    camera.setUpRegions();
    camera.makeExposureControl();
    camera.makeWhiteBalance();
}

void setTone(TAVRA_COMMON_PARAM& camera, Input& input) {
    std::array<std::uint8_t, 256> table;
    input.repeat(table.data(), table.size());
    const std::uint8_t modes[] = {0, 1, 2, 255};
    for (std::uint8_t curve = 0; curve < 5; ++curve) {
        const std::uint8_t choice = input.byte();
        if ((choice & 0x80) != 0) continue;
        camera.gamma->SetGamma(curve, modes[choice & 3], input.byte(),
                               static_cast<std::int16_t>(input.word()), input.word(), table.data(), 8);
    }
    camera.sharpness->SetMode(input.byte() & 1, input.word(), input.byte());
}

void setColor(TAVRA_COMMON_PARAM& camera, Input& input) {
    std::array<std::int16_t, 12> matrix;
    for (std::int16_t& value : matrix) value = static_cast<std::int16_t>(input.word());
    // Each rebuilds tables that take most of the time of an input.
    const std::uint8_t choice = input.byte();
    if ((choice & 1) != 0) camera.colorMatrix->SetColorMatrix(0xFF, matrix.data());
    const auto hue = static_cast<std::int16_t>(input.word());
    const std::uint16_t saturation = input.word();
    if ((choice & 2) != 0) camera.colorMatrix->SetHueSaturation(1, hue, saturation);
    camera.chromaSuppress->SetHighThreshold(input.word() % 300);
    camera.chromaSuppress->SetHighStrength(input.word());
    camera.chromaSuppress->SetLowThreshold(input.word() % 300);
    camera.chromaSuppress->SetLowStrength(input.word());
}

void setControls(TAVRA_COMMON_PARAM& camera, Input& input) {
    static_cast<void>(camera.exposure->setMode(input.byte() % 7));
    ControlSpeed speed;
    speed.averageFrames = input.byte() % 3;
    speed.skipFrames = input.byte() % 2;
    camera.exposure->setControlSpeed(speed);
    static_cast<void>(camera.whiteBalance->setMode(input.byte() % 4));
    CAveragePixelValue::Boundaries x, y;
    for (std::uint16_t& edge : x) edge = input.word();
    for (std::uint16_t& edge : y) edge = input.word();
    camera.statistics.setControlArea(x, y);
}

void setShadingMap(TAVRA_COMMON_PARAM& camera, Input& input) {
    const ImageSize size = camera.geometry->imageSize();
    std::vector<std::int32_t> map(std::size_t{size.width} * size.height);
    input.repeat(reinterpret_cast<std::uint8_t*>(map.data()), map.size() * sizeof map[0]);
    camera.shadingCorrection->SetMap(size.width, size.height, 4 * size.width, map.data());
}

// What an application may change from one frame to the next.
void changeBetweenFrames(TAVRA_COMMON_PARAM& camera, Input& input) {
    const std::uint32_t noise[] = {TAVRA_NOISE_REDUCTION_OFF, TAVRA_NOISE_REDUCTION_MEDIAN,
                                   TAVRA_NOISE_REDUCTION_DARK_FRAME, TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME};
    const std::uint32_t shading[] = {0, 1, 2, 3, 4, 255};
    camera.noiseReduction.setMode(noise[input.byte() % std::size(noise)]);
    camera.shadingCorrection->SetMode(shading[input.byte() % std::size(shading)]);
    camera.mirrorMode = input.byte();
    camera.rotationMode = input.byte() % 5;
    camera.interpolationMethod = input.byte() % 8;
    requestsFail = input.byte() % 16 == 1;
}

RunState startOf(const TAVRA_COMMON_PARAM& camera, Input& input) {
    const CFrameFeature& geometry = *camera.geometry;
    RunState run;
    run.image = geometry.imageSize();
    run.raw = geometry.rawSize();
    run.regions = geometry.multiRoi;
    run.rawSize = geometry.rawDataSize;
    run.transferBits = geometry.transferBits;
    run.previewFormat = geometry.previewPixelFormat;
    run.triggerWord = std::uint32_t{input.word()} << 8 >> 4;
    return run;
}

struct Seen {
    const RunState& run;
    std::vector<std::uint8_t> image;  // so that every byte is read
};

void seeImage(void* image, std::uint32_t size, std::uint32_t width, std::uint32_t height, std::uint32_t,
              std::uint32_t format, void* context, std::uint32_t*) {
    auto& seen = *static_cast<Seen*>(context);
    if (format != seen.run.previewFormat) std::abort();
    if (size != paddedStride(width, bytesPerPixel(format)) * height) std::abort();
    const ImageSize& whole = seen.run.image;
    const bool isTurned = width == whole.height && height == whole.width;
    if (!isTurned && (width != whole.width || height != whole.height)) std::abort();
    const auto* const bytes = static_cast<const std::uint8_t*>(image);
    seen.image.assign(bytes, bytes + size);
}

void noRedraw(TavraWindow) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const platform::UsbAccess access = [] {
        platform::UsbAccess operations{};
        operations.controlTransfer = answer;
        operations.getLastError = lastError;
        return operations;
    }();
    Input input(data, size);
    asked = &input;
    requestsFail = false;

    TAVRA_COMMON_PARAM camera;
    camera.control.attach(access, 1);
    setUp(camera, input);
    if (!buildImageBuffers(camera).ok()) return 0;
    setTone(camera, input);
    setColor(camera, input);
    setControls(camera, input);
    setShadingMap(camera, input);

    RunState run = startOf(camera, input);
    Seen seen{run, {}};
    std::uint32_t identifier = 0;
    if (input.byte() % 8 != 1)
        static_cast<void>(camera.previewBitmapCallbacks.add(seeImage, &seen, identifier));

    const platform::Event stop(platform::Event::Reset::Manual);
    FrameQueue queue({0, run.rawSize, 1024}, run.rawSize, stop);
    CWorkerDrawTimming drawWorker(noRedraw);
    FramePath path(camera, run, queue, drawWorker);
    std::vector<std::uint8_t> frame(std::max(run.rawSize, 1u));
    for (int i = 0; i < 6 && run.goOn; ++i) {
        changeBetweenFrames(camera, input);
        input.repeat(frame.data(), frame.size());
        const FrameBlock* const block = &queue.current();
        path.process(frame.data());
        if (&queue.current() == block) std::abort();  // it was not released, or more than once
        if (input.empty()) break;
    }
    path.publishPending();
    return 0;
}
