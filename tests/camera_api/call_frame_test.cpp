// What every function that takes a handle does before anything else.
#include "camera/global_last_error.h"
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

// An exported function with arguments that a camera could take.
struct Call {
    const char* name;
    std::function<std::uint64_t(TavraHandle)> run;
};

// What the calls are given to read from and write to.
std::uint8_t bytes[16];
std::uint16_t words[4];
std::uint32_t longs[8];
float number = 0;
char narrowText[64];
TavraWChar wideText[64];
TavraRawCallback rawCallback;
TavraPreviewBitmapCallback bitmapCallback;
TavraPreviewGDICallback gdiCallback;

#define CALL(name, ...)                                                                                      \
    {                                                                                                        \
#name,                                                                                               \
            [](TavraHandle h)                                                                                \
                 -> std::uint64_t { return static_cast<std::uint64_t>(name(h __VA_OPT__(, ) __VA_ARGS__)); } \
    }

// Opening, identity, geometry, memory and values.
std::vector<Call> cameraCalls() {
    return {
        CALL(Tavra_GetDevicePathW, wideText, longs),
        CALL(Tavra_GetDevicePathA, narrowText, longs),
        CALL(Tavra_SetReceiveMsgWindow, nullptr),
        CALL(Tavra_GetTavraUSBHandle),
        CALL(Tavra_GetUSBFunctionAddress, bytes),
        CALL(Tavra_GetFPGAStatus, 0, 1, words),
        CALL(Tavra_SetFPGAStatus, 0, 1, words),
        CALL(Tavra_GetFPGAStatusEx, 0, 0, 1, words),
        CALL(Tavra_SetFPGAStatusEx, 0, 0, 1, words),
        CALL(Tavra_GetFPGAData2, 1, 0, longs, 4),
        CALL(Tavra_SetFPGAData2, 1, 0, longs, 4),
        CALL(Tavra_HasFunction, 1, longs),
        CALL(Tavra_GetCameraVersion, words, words + 1, words + 2, words + 3),
        CALL(Tavra_GetProductNameA, narrowText, 64),
        CALL(Tavra_GetProductNameW, wideText, 128),
        CALL(Tavra_GetSamePIDCameraType, longs),
        CALL(Tavra_GetColorArray, words),
        CALL(Tavra_SetColorArray, 1),
        CALL(Tavra_GetUSBSpeed, bytes),
        CALL(Tavra_GetUSBMaxSpeed, bytes),
        CALL(Tavra_GetEnableTransferBitsPerPixel, longs),
        CALL(Tavra_GetEnableImageSize, longs, words),
        CALL(Tavra_GetEnablePreviewPixelFormat, longs),
        CALL(Tavra_GetEnableClock, longs, longs + 1, longs + 2, longs + 3),
        CALL(Tavra_GetEnableTriggerVersion, longs),
        CALL(Tavra_GetEnableMirrorMode, bytes),
        CALL(Tavra_GetImageSize, 0, words, longs, longs + 1, longs + 2, longs + 3),
        CALL(Tavra_SetImageSize, 0, 1, 0, 0, 640, 480),
        CALL(Tavra_GetMaximumImageSize, longs, longs + 1),
        CALL(Tavra_GetMaxROICount, longs),
        CALL(Tavra_GetROI, 0, longs, longs + 1, longs + 2, longs + 3, longs + 4),
        CALL(Tavra_SetROI, 0, 1, 0, 0, 640, 480),
        CALL(Tavra_GetSkippingAndBinning, bytes, bytes + 1, bytes + 2, bytes + 3),
        CALL(Tavra_SetSkippingAndBinning, 0, 0, 0, 0),
        CALL(Tavra_GetBinningSumMode, words),
        CALL(Tavra_SetBinningSumMode, 0),
        CALL(Tavra_GetClock, longs, longs + 1),
        CALL(Tavra_SetClock, 0, 1),
        CALL(Tavra_GetFrameClock, words, words + 1),
        CALL(Tavra_GetOutputFPS, &number),
        CALL(Tavra_GetVBlankForFPS, longs),
        CALL(Tavra_SetVBlankForFPS, 0),
        CALL(Tavra_GetMaxVBlankForFPS, longs),
        CALL(Tavra_GetRawDataSize, longs),
        CALL(Tavra_GetPreviewDataSize, longs, longs + 1, longs + 2, longs + 3),
        CALL(Tavra_SetPreviewPixelFormat, 4),
        CALL(Tavra_GetPreviewPixelFormat, longs),
        CALL(Tavra_SetTransferBitsPerPixel, 1),
        CALL(Tavra_GetTransferBitsPerPixel, longs),
        CALL(Tavra_ReadCameraSerialIDA, longs, narrowText, 64),
        CALL(Tavra_ReadCameraSerialIDW, longs, wideText, 128),
        CALL(Tavra_ReadCameraUserIDA, longs, narrowText, 64),
        CALL(Tavra_ReadCameraUserIDW, longs, wideText, 128),
        CALL(Tavra_WriteCameraSerialIDA, 1, narrowText, 64),
        CALL(Tavra_WriteCameraSerialIDW, 1, wideText, 128),
        CALL(Tavra_WriteCameraUserIDA, 1, narrowText, 64),
        CALL(Tavra_WriteCameraUserIDW, 1, wideText, 128),
        CALL(Tavra_ReadUserMemory, narrowText, 0, 4),
        CALL(Tavra_WriteUserMemory, narrowText, 0, 4),
        CALL(Tavra_ReadI2CB, 0, 1, 0, 1, bytes),
        CALL(Tavra_WriteI2CB, 0, 1, 0, 1, bytes),
        CALL(Tavra_ReadI2CW, 0, 1, 0, 1, bytes),
        CALL(Tavra_WriteI2CW, 0, 1, 0, 1, bytes),
        CALL(Tavra_CameraSetting, 1),
        CALL(Tavra_SetCameraMode, 0),
        CALL(Tavra_GetDeviceTemperature, 0, longs),
        CALL(Tavra_GetDriverVersion, longs, longs + 1, longs + 2, longs + 3),
        CALL(Tavra_GetHDRType, longs),
        CALL(Tavra_GetHDRParameter, longs, longs + 1),
        CALL(Tavra_SetHDRParameter, longs, 4),
        CALL(Tavra_GetMaxDigitalGain, words),
        CALL(Tavra_GetDigitalGainTimesFromSettingValue, 1, &number),
        CALL(Tavra_GetDigitalGainSettingValueFromGainTimes, 1.0F, words),
        CALL(Tavra_GetAnalogBlackLevel, words),
        CALL(Tavra_SetAnalogBlackLevel, 1),
        CALL(Tavra_GetMaxAnalogBlackLevel, words),
        CALL(Tavra_GetDigitalClamp, words),
        CALL(Tavra_SetDigitalClamp, 1),
        CALL(Tavra_GetMaxDigitalClamp, words),
        CALL(Tavra_GetCameraGammaValue, words),
        CALL(Tavra_SetCameraGammaValue, 1),
        CALL(Tavra_GetAdjustmentMode, longs),
        CALL(Tavra_SetAdjustmentMode, 1),
        CALL(Tavra_GetResetSwitchEnabled, longs),
        CALL(Tavra_SetResetSwitchEnabled, 1),
        CALL(Tavra_GetPriorityMode, longs),
        CALL(Tavra_SetPriorityMode, 1),
        CALL(Tavra_SetColorInterpolationMethod, 3),
        CALL(Tavra_GetColorInterpolationMethod, bytes),
    };
}

// Stream, callbacks, snapshots and images.
std::vector<Call> captureCalls() {
    return {
        CALL(Tavra_StartTransfer),
        CALL(Tavra_StopTransfer),
        CALL(Tavra_ClearBuffer),
        CALL(Tavra_AddRawCallback, rawCallback, nullptr, longs),
        CALL(Tavra_AddPreviewBitmapCallback, bitmapCallback, nullptr, longs),
        CALL(Tavra_AddPreviewGDICallback, gdiCallback, nullptr, longs),
        CALL(Tavra_RemoveRawCallback, 1),
        CALL(Tavra_RemovePreviewBitmapCallback, 1),
        CALL(Tavra_RemovePreviewGDICallback, 1),
        CALL(Tavra_RemoveAllRawCallback),
        CALL(Tavra_RemoveAllPreviewBitmapCallback),
        CALL(Tavra_RemoveAllPreviewGDICallback),
        CALL(Tavra_GetRawCallbackCount, longs),
        CALL(Tavra_GetPreviewBitmapCallbackCount, longs),
        CALL(Tavra_GetPreviewGDICallbackCount, longs),
        CALL(Tavra_GetRawCallback, 0, &rawCallback, longs),
        CALL(Tavra_GetPreviewBitmapCallback, 0, &bitmapCallback, longs),
        CALL(Tavra_GetPreviewGDICallback, 0, &gdiCallback, longs),
        CALL(Tavra_GetRawCallbackList, 1, &rawCallback, longs, longs + 1),
        CALL(Tavra_GetPreviewBitmapCallbackList, 1, &bitmapCallback, longs, longs + 1),
        CALL(Tavra_GetPreviewGDICallbackList, 1, &gdiCallback, longs, longs + 1),
        CALL(Tavra_TakeRawSnapShot, bytes, 4, longs, longs + 1, 0),
        CALL(Tavra_TakePreviewSnapShot, bytes, 4, longs, longs + 1, 0),
        CALL(Tavra_GetPreviewImagePixelValue, 0, 0, longs),
        CALL(Tavra_SaveImageA, 1, 1, 1, bytes, "image.bmp", 0),
        CALL(Tavra_SaveImageW, 1, 1, 1, bytes, u"image.bmp", 0),
        CALL(Tavra_ConvertRawToBGR, 2, 2, bytes, bytes, 3, 4),
        CALL(Tavra_ConvTo8BitsImage, 2, 2, 1, bytes, bytes),
        CALL(Tavra_ConvertBitmapBGR24ToRGB24, 1, 1, bytes),
    };
}

// Triggers and I/O pins.
std::vector<Call> triggerCalls() {
    return {
        CALL(Tavra_SetTriggerMode, 0),
        CALL(Tavra_GetTriggerMode, longs),
        CALL(Tavra_SetTriggerMode2, 0, 1),
        CALL(Tavra_GetTriggerMode2, 0, longs),
        CALL(Tavra_SetTriggerSource, 0, 1),
        CALL(Tavra_GetTriggerSource, 0, longs),
        CALL(Tavra_SetTriggerDelay, 0, 1),
        CALL(Tavra_GetTriggerDelay, 0, longs),
        CALL(Tavra_SetTriggerTiming, 0, 1),
        CALL(Tavra_GetTriggerTiming, 0, longs),
        CALL(Tavra_SoftTrigger),
        CALL(Tavra_SoftSubTrigger),
        CALL(Tavra_TriggerReadOut),
        CALL(Tavra_TriggerSoftware, 0),
        CALL(Tavra_ResetCounter),
        CALL(Tavra_SetExposureMode, 1),
        CALL(Tavra_GetExposureMode, longs),
        CALL(Tavra_SetSensorShutterMode, 2),
        CALL(Tavra_GetSensorShutterMode, longs),
        CALL(Tavra_IsTriggerSelectorSupported, 0),
        CALL(Tavra_GetIOExistence, longs),
        CALL(Tavra_GetIOPinDirection, longs),
        CALL(Tavra_SetIOPinDirection, 0),
        CALL(Tavra_GetIOPinPolarity, longs),
        CALL(Tavra_SetIOPinPolarity, 0),
        CALL(Tavra_GetIOPinStatus, longs),
        CALL(Tavra_SetIOPinStatus, 0),
        CALL(Tavra_GetIOPinMode, 0, longs),
        CALL(Tavra_SetIOPinMode, 0, 0),
        CALL(Tavra_GetSwStatus, longs),
        CALL(Tavra_GetLEDExistence, longs),
    };
}

// Exposure control, gain, shutter and the area that the controls measure.
std::vector<Call> exposureCalls() {
    return {
        CALL(Tavra_SetALCMode, 0),
        CALL(Tavra_GetALCMode, bytes),
        CALL(Tavra_SetALCControlSpeed, 1, 1, 3, 4),
        CALL(Tavra_GetALCControlSpeed, bytes, bytes + 1, bytes + 2, bytes + 3),
        CALL(Tavra_SetTargetBrightness, 100, 5, 5),
        CALL(Tavra_GetTargetBrightness, bytes, bytes + 1, bytes + 2),
        CALL(Tavra_SetALCWeight, bytes),
        CALL(Tavra_GetALCWeight, bytes),
        CALL(Tavra_SetGain, 0),
        CALL(Tavra_GetGain, words),
        CALL(Tavra_GetMaxGain, words),
        CALL(Tavra_SetGainControlRange, 0, 0),
        CALL(Tavra_GetGainControlRange, words, words + 1),
        CALL(Tavra_GetGainDBFromSettingValue, 1, &number),
        CALL(Tavra_SetDigitalGain, 1),
        CALL(Tavra_GetDigitalGain, words),
        CALL(Tavra_SetShutterSpeed, 1, 0),
        CALL(Tavra_GetShutterSpeed, words, words + 1),
        CALL(Tavra_SetShutterSpeed2, 1, 0),
        CALL(Tavra_GetShutterSpeed2, longs, longs + 1),
        CALL(Tavra_SetExposureClock, 1),
        CALL(Tavra_GetExposureClock, longs),
        CALL(Tavra_GetShutterMaxClock, longs),
        CALL(Tavra_GetMaxLongExposureClock, longs),
        CALL(Tavra_GetMaxShortExposureClock, longs),
        CALL(Tavra_GetEnableShutterSpeed, words),
        CALL(Tavra_SetShutterControlRange, 1, 0, 2, 0),
        CALL(Tavra_GetShutterControlRange, words, words + 1, words + 2, words + 3),
        CALL(Tavra_SetShutterControlRange2, 1, 0, 2, 0),
        CALL(Tavra_GetShutterControlRange2, longs, longs + 1, longs + 2, longs + 3),
        CALL(Tavra_SetAEMaxExposureClock, 1),
        CALL(Tavra_GetAEMaxExposureClock, longs),
        CALL(Tavra_SetAEMinExposureClock, 1),
        CALL(Tavra_GetAEMinExposureClock, longs),
        CALL(Tavra_GetExposureClockFromTime, 0.01F, longs),
        CALL(Tavra_GetExposureTimeFromClock, 1, &number),
        CALL(Tavra_SetControlArea, words, words + 2),
        CALL(Tavra_GetControlArea, words, words + 2),
    };
}

// White balance by hand, by the controls and of one image.
std::vector<Call> whiteBalanceCalls() {
    return {
        CALL(Tavra_SetWhiteBalanceMode, 0),
        CALL(Tavra_GetWhiteBalanceMode, bytes),
        CALL(Tavra_SetWhiteBalanceGain, 128, 128, 128, 128),
        CALL(Tavra_GetWhiteBalanceGain, words, words + 1, words + 2, words + 3),
        CALL(Tavra_GetWhiteBalanceMaxGain, words, words + 1, words + 2, words + 3),
        CALL(Tavra_SetWhiteBalanceTarget, 128, 128),
        CALL(Tavra_GetWhiteBalanceTarget, words, words + 1),
        CALL(Tavra_SetWhiteBalanceToleranceThreshold, 1, 1),
        CALL(Tavra_GetWhiteBalanceToleranceThreshold, words, words + 1),
        CALL(Tavra_SetAWBWeight, bytes),
        CALL(Tavra_GetAWBWeight, bytes),
        CALL(Tavra_RawWhiteBalance, 2, 2, 2, bytes),
        CALL(Tavra_GetEnableWhiteBalanceMode, longs),
    };
}
#undef CALL

std::vector<Call> everyCall() {
    std::vector<Call> calls = cameraCalls();
    for (const auto& more : {captureCalls(), triggerCalls(), exposureCalls(), whiteBalanceCalls()}) {
        calls.insert(calls.end(), more.begin(), more.end());
    }
    return calls;
}

using CallFrame = CameraTest;

TEST_F(CallFrame, ANullHandleIsRefusedInTheGlobalLastError) {
    for (const Call& call : everyCall()) {
        globalLastError = 0;
        EXPECT_EQ(call.run(nullptr), 0u) << call.name;
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u) << call.name;
    }
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(CallFrame, ARecordWithoutDeviceIsRefusedInItsOwnLastError) {
    const auto closed = std::make_unique<TAVRA_COMMON_PARAM>();
    globalLastError = 0;
    for (const Call& call : everyCall()) {
        closed->lastError = 0;
        EXPECT_EQ(call.run(closed.get()), 0u) << call.name;
        EXPECT_EQ(Tavra_GetLastError(closed.get()), 0xE0000003u) << call.name;
    }
    Tavra_Close(closed.get());  // refused like the others: the record is not freed twice
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0u);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(CallFrame, SuccessNeverClearsTheLastError) {
    open();
    EXPECT_EQ(Tavra_SetPreviewPixelFormat(handle, 1), 0);
    EXPECT_EQ(lastError(), 87u);
    std::uint32_t value = 0;
    EXPECT_EQ(Tavra_GetPreviewPixelFormat(handle, &value), 1);
    EXPECT_EQ(Tavra_SetClock(handle, 0, 1), 1);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(CallFrame, AFailureOnAHandleLeavesTheGlobalLastErrorAlone) {
    open();
    globalLastError = 1234;
    EXPECT_EQ(Tavra_SetPreviewPixelFormat(handle, 1), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 1234u);
}

TEST_F(CallFrame, AGeometryRefreshForgetsOnlyThatThereIsNoWindow) {
    open();
    record().lastError = 0xE0000007;
    EXPECT_EQ(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 1);
    EXPECT_EQ(lastError(), 0u);
    record().lastError = 0xE0000006;
    EXPECT_EQ(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 1);
    EXPECT_EQ(lastError(), 0xE0000006u);
}

TEST_F(CallFrame, AnOutputThatIsNowhereIsABadArgument) {
    open();
    std::uint8_t u8 = 0;
    std::uint16_t u16 = 0;
    std::uint32_t u32 = 7;
    expectFailure(Tavra_HasFunction(handle, 1, nullptr), 87);
    expectFailure(Tavra_GetCameraVersion(handle, &u16, nullptr, &u16, &u16), 87);
    expectFailure(Tavra_GetUSBSpeed(handle, nullptr), 87);
    expectFailure(Tavra_GetEnableImageSize(handle, &u32, nullptr), 87);
    expectFailure(Tavra_GetClock(handle, &u32, nullptr), 87);
    expectFailure(Tavra_GetSkippingAndBinning(handle, &u8, &u8, &u8, nullptr), 87);
    expectFailure(Tavra_GetFPGAStatus(handle, 0, 1, nullptr), 87);
    expectFailure(Tavra_SetFPGAStatus(handle, 0, 1, nullptr), 87);
    expectFailure(Tavra_ReadUserMemory(handle, nullptr, 0, 4), 87);
    expectFailure(Tavra_ReadI2CB(handle, 0, 1, 0, 1, nullptr), 87);
    expectFailure(Tavra_ReadCameraUserIDA(handle, nullptr, nullptr, 0), 87);
    expectFailure(Tavra_ReadCameraUserIDA(handle, &u32, nullptr, 4), 87);
    expectFailure(Tavra_GetDeviceTemperature(handle, 0, nullptr), 87);
    expectFailure(Tavra_GetOutputFPS(handle, nullptr), 87);
    EXPECT_EQ(u32, 7u);
    EXPECT_THAT(traffic(), IsEmpty());
    EXPECT_EQ(Tavra_GetUSBDllVersion(&u32, &u32, nullptr, &u32), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 87u);
}

TEST_F(CallFrame, TheReceiverCanChangeAtAnyTime) {
    open();
    int window = 0;
    expectSuccess(Tavra_SetReceiveMsgWindow(handle, &window));
    EXPECT_EQ(record().receiver, &window);
    expectSuccess(Tavra_SetReceiveMsgWindow(handle, nullptr));
    EXPECT_EQ(record().receiver, nullptr);
}

}  // namespace
}  // namespace tavra::test
