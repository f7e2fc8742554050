#include "camera/camera_info.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr std::uint16_t kVendor = 0x2E6B;

struct SensorSize {
    std::uint16_t productType;
    std::uint32_t width;
    std::uint32_t height;
};

// Sensor sizes of the types whose identity block tells none.
constexpr SensorSize kSensorSizes[] = {
    {773, 640, 480},    {1797, 640, 480},   {272, 640, 492},    {528, 640, 492},    {2310, 640, 492},
    {4102, 640, 492},   {1541, 1024, 768},  {2053, 1024, 768},  {784, 1024, 776},   {1040, 1024, 776},
    {4358, 1024, 776},  {4614, 1024, 776},  {265, 1280, 964},   {521, 1280, 964},   {1296, 1280, 964},
    {1552, 1280, 964},  {1808, 1360, 1040}, {2064, 1360, 1040}, {4870, 1360, 1040}, {5126, 1360, 1040},
    {2320, 1600, 1236}, {4112, 1600, 1236}, {5382, 1600, 1236}, {5638, 1600, 1236},
};
constexpr SensorSize kOtherSensor{0, 4092, 4092};

using Reply = std::span<const std::uint8_t, CameraInfo::kReplySize>;

// Fields that stand in both layouts, from the product type on without a gap.
void parseCommon(CameraInfo& info, const std::uint8_t* productType) {
    info.productType = loadLe16(productType);
    info.hardwareRevision = loadLe16(productType + 2);
    info.firmwareRevision = loadLe16(productType + 4);
    info.colorArray = loadLe16(productType + 6);
    info.frameHeaderSize = loadLe16(productType + 8);
    info.enableImageSize = loadLe32(productType + 10);
    info.enableTransferBits = loadLe32(productType + 14);
    info.furtherMask = loadLe32(productType + 18);
    info.enableScanModes = loadLe16(productType + 22);
}

void parseNewLayout(CameraInfo& info, Reply reply) {
    info.vendor = loadLe16(&reply[2]);
    parseCommon(info, &reply[4]);
    info.clockMaximum = loadLe32(&reply[28]);
    info.clockMinimum = loadLe32(&reply[32]);
    info.clockValue = loadLe32(&reply[36]);
    info.enableClock = loadLe32(&reply[40]);
    info.enableShutterSpeed = loadLe16(&reply[44]);
    info.furtherWord = loadLe16(&reply[46]);
    info.furtherLong = loadLe32(&reply[48]);
    info.enableTriggerVersion = loadLe32(&reply[52]);
    info.maximumWidth = loadLe32(&reply[56]);
    info.maximumHeight = loadLe32(&reply[60]);
}

}  // namespace

CameraInfo CameraInfo::parse(Reply reply) {
    CameraInfo info;
    const bool oldLayout = loadLe16(&reply[2]) != kVendor && loadLe16(&reply[10]) == kReplySize;
    if (oldLayout) {
        info.vendor = kVendor;
        parseCommon(info, &reply[2]);
    } else {
        parseNewLayout(info, reply);
    }
    if (info.maximumWidth == 0 || info.maximumHeight == 0) {
        const auto* const found = std::ranges::find(kSensorSizes, info.productType, &SensorSize::productType);
        const SensorSize& size = found != std::end(kSensorSizes) ? *found : kOtherSensor;
        info.maximumWidth = size.width;
        info.maximumHeight = size.height;
    }
    return info;
}

}  // namespace tavra
