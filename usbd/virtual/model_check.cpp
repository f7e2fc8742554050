#include "model_check.h"

#include <bit>

#include "base/pixel_format.h"
#include "error_numbers.h"
#include "toml_fields.h"

namespace tavra::usbd {
namespace {

constexpr std::uint16_t kVendor = 0x2E6B;
constexpr std::uint16_t kOldHeaderSize = 64;
constexpr std::uint64_t kMostPixels = 64u << 20;

void checkIdentity(const IdentityModel& identity, Complaint& complaint) {
    if (identity.productType == 0) complaint.set("identity.product_type is missing");
    if (identity.colorArray >= 6 && identity.colorArray <= 11) {
        complaint.set("identity.color_array must be 1 to 5 or 12 to 19");
    }
    if (identity.layout == IdentityLayout::Old &&
        (identity.headerSize != kOldHeaderSize || identity.productType == kVendor)) {
        complaint.set("identity.header_size must be 64 in the old layout: the layout is known by it");
    }
    if (identity.layout == IdentityLayout::New && identity.vendor != kVendor) {
        complaint.set("identity.vendor must be 11883 in the new layout: the layout is known by it");
    }
    for (std::uint32_t rest = identity.enableTransferBits; rest != 0; rest &= rest - 1) {
        if (transferBitsStored(rest & -rest) == 0)
            complaint.set("identity.enable_transfer_bits has an unknown code");
    }
}

void checkGeometry(const Model& model, Complaint& complaint) {
    const GeometryModel& geometry = model.geometry;
    if (std::uint64_t{geometry.sensorWidth} * geometry.sensorHeight > kMostPixels) {
        complaint.set("geometry.sensor_width times sensor_height must be at most 64 million");
    }
    if (geometry.minimumWidth > geometry.sensorWidth || geometry.minimumHeight > geometry.sensorHeight) {
        complaint.set("geometry.minimum_width and minimum_height must fit the sensor");
    }
    if (!std::has_single_bit(geometry.transferBits) ||
        (geometry.transferBits & model.identity.enableTransferBits) == 0) {
        complaint.set("geometry.transfer must be a code of identity.enable_transfer_bits");
    }
    if (geometry.recordLength < 64 + 16 * (geometry.regionCount - 1)) {
        complaint.set("geometry.record_length has no room for the regions");
    }
    if (geometry.defaultGain > geometry.maximumGain) {
        complaint.set("geometry.default_gain must not be above maximum_gain");
    }
}

}  // namespace

void checkModel(const Model& model, Complaint& complaint) {
    checkIdentity(model.identity, complaint);
    checkGeometry(model, complaint);
    if (model.pages.present && !model.hasRegisters()) {
        complaint.set("pages need capability.word4 bit 0, and no legacy product type");
    }
    if (model.firmware == Firmware::Absent && !model.isLegacy()) {
        complaint.set("firmware can only be absent on product types 773, 1541, 1797 and 2053");
    }
    constexpr std::uint16_t kMostDefectsInPage = 1000;
    if (model.pages.present && model.capability[5] > kMostDefectsInPage) {
        complaint.set("capability.word5 must be at most 1000 with pages: page 18 holds no more positions");
    }
    if (model.fault.error.ordered() &&
        (model.fault.error.amount == 0 || model.fault.error.amount == error::kIoPending)) {
        complaint.set("fault.error must be an error that a read can end with");
    }
    if (model.fault.vanishError != 1167 && model.fault.vanishError != 5) {
        complaint.set("fault.vanish_error must be 1167 or 5");
    }
}

}  // namespace tavra::usbd
