// Settings of the camera itself: commands, modes, single numbers, HDR, digital gain, temperature, versions.
#include "camera/camera_values.h"

#include "api/output.h"
#include "camera/camera_setting.h"
#include "camera/digital_gain.h"
#include "camera/hdr.h"
#include "platform/library_version.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr std::uint16_t kCameraModeAddress = 101;

template <typename Output>
TavraBool getValue(TavraHandle handle, Output* output, CameraValue which) {
    return api::getNumber(handle, output, [&](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        return getCameraValue(camera, which, value);
    });
}

TavraBool setValue(TavraHandle handle, std::uint32_t value, CameraValue which) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return setCameraValue(camera, which, value); });
}

TavraBool getLimit(TavraHandle handle, std::uint16_t* output, CameraLimit which) {
    return api::getNumber(handle, output, [&](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        return getCameraLimit(camera, which, value);
    });
}

}  // namespace

TavraBool Tavra_CameraSetting(TavraHandle handle, std::uint16_t command) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return sendCameraSetting(camera, command); });
}

// By design: success in any case; a camera that did not take the mode shows in the last error.
TavraBool Tavra_SetCameraMode(TavraHandle handle, std::uint16_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.noteFailure(camera.control.writeStatusWord(kCameraModeAddress, mode));
        return Status();
    });
}

TavraBool Tavra_GetDeviceTemperature(TavraHandle handle, std::uint32_t sensor, std::uint32_t* temperature) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(temperature));
        return getTemperature(camera, sensor, *temperature);
    });
}

TavraBool Tavra_GetDriverVersion(TavraHandle handle, std::uint32_t* majorMinor, std::uint32_t* build,
                                 std::uint32_t* word2, std::uint32_t* word3) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(majorMinor, build, word2, word3));
        const platform::UsbAccess& usb = *camera.control.access();
        const bool done = usb.getDriverVersion(camera.control.device(), majorMinor, build, word2, word3) != 0;
        return done ? Status() : Status(usb.getLastError());
    });
}

TavraBool Tavra_GetUSBDllVersion(std::uint32_t* version0, std::uint32_t* version1, std::uint32_t* version2,
                                 std::uint32_t* version3) {
    const platform::UsbAccess* usb = nullptr;
    Status status = api::requireOutputs(version0, version1, version2, version3);
    if (status.ok()) status = platform::loadUsbAccess(usb);
    if (status.ok() && usb->getLibraryVersion(version0, version1, version2, version3) == 0) {
        status = Status(usb->getLastError());
    }
    if (!status.ok()) globalLastError = status.code();
    return status.ok() ? 1 : 0;
}

TavraBool Tavra_GetCAMDllVersion(std::uint32_t* fileVersionHigh, std::uint32_t* fileVersionLow,
                                 std::uint32_t* productVersionHigh, std::uint32_t* productVersionLow) {
    const platform::LibraryVersion version = platform::libraryVersion();
    api::giveIfWanted(fileVersionHigh, version.fileHigh);
    api::giveIfWanted(fileVersionLow, version.fileLow);
    api::giveIfWanted(productVersionHigh, version.productHigh);
    api::giveIfWanted(productVersionLow, version.productLow);
    return 1;
}

TavraBool Tavra_GetHDRType(TavraHandle handle, std::uint32_t* type) {
    return api::getNumber(handle, type, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = hdrType(camera);
        return Status();
    });
}

TavraBool Tavra_GetHDRParameter(TavraHandle handle, std::uint32_t* parameters, std::uint32_t* size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(size));
        return getHdrParameters(camera, parameters, *size);
    });
}

TavraBool Tavra_SetHDRParameter(TavraHandle handle, const std::uint32_t* parameters, std::uint32_t size) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return setHdrParameters(camera, parameters, size); });
}

TavraBool Tavra_GetMaxDigitalGain(TavraHandle handle, std::uint16_t* gain) {
    return api::getNumber(handle, gain, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.maximumDigitalGain;
        return Status();
    });
}

TavraBool Tavra_GetDigitalGainTimesFromSettingValue(TavraHandle handle, std::uint16_t value, float* times) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(times));
        *times = digitalGainTimes(camera, value);
        return Status();
    });
}

TavraBool Tavra_GetDigitalGainSettingValueFromGainTimes(TavraHandle handle, float times,
                                                        std::uint16_t* value) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(value));
        *value = digitalGainValue(camera, times);
        return Status();
    });
}

TavraBool Tavra_GetAnalogBlackLevel(TavraHandle handle, std::uint16_t* level) {
    return getValue(handle, level, CameraValue::AnalogBlackLevel);
}

TavraBool Tavra_SetAnalogBlackLevel(TavraHandle handle, std::uint16_t level) {
    return setValue(handle, level, CameraValue::AnalogBlackLevel);
}

TavraBool Tavra_GetMaxAnalogBlackLevel(TavraHandle handle, std::uint16_t* level) {
    return getLimit(handle, level, CameraLimit::AnalogBlackLevel);
}

TavraBool Tavra_GetDigitalClamp(TavraHandle handle, std::uint16_t* value) {
    return getValue(handle, value, CameraValue::DigitalClamp);
}

TavraBool Tavra_SetDigitalClamp(TavraHandle handle, std::uint16_t value) {
    return setValue(handle, value, CameraValue::DigitalClamp);
}

TavraBool Tavra_GetMaxDigitalClamp(TavraHandle handle, std::uint16_t* value) {
    return getLimit(handle, value, CameraLimit::DigitalClamp);
}

TavraBool Tavra_GetCameraGammaValue(TavraHandle handle, std::uint16_t* value) {
    return getValue(handle, value, CameraValue::Gamma);
}

TavraBool Tavra_SetCameraGammaValue(TavraHandle handle, std::uint16_t value) {
    return setValue(handle, value, CameraValue::Gamma);
}

TavraBool Tavra_GetAdjustmentMode(TavraHandle handle, std::uint32_t* mode) {
    return getValue(handle, mode, CameraValue::AdjustmentMode);
}

TavraBool Tavra_SetAdjustmentMode(TavraHandle handle, std::uint32_t mode) {
    return setValue(handle, mode, CameraValue::AdjustmentMode);
}

TavraBool Tavra_GetResetSwitchEnabled(TavraHandle handle, std::uint32_t* enabled) {
    return api::getNumber(handle, enabled, getResetSwitch);
}

TavraBool Tavra_SetResetSwitchEnabled(TavraHandle handle, std::uint32_t enabled) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setResetSwitch(camera, enabled); });
}

TavraBool Tavra_GetPriorityMode(TavraHandle handle, std::uint32_t* mode) {
    return api::getNumber(handle, mode, getPriorityMode);
}

TavraBool Tavra_SetPriorityMode(TavraHandle handle, std::uint32_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setPriorityMode(camera, mode); });
}
