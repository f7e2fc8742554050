// When noise reduction, white balance, statistics and the controls act on a frame, and what a failure of a
// stage means for the run.
#include "capture_api/chain_fixture.h"
#include "control/luminance_ctrl_usb.h"
#include "platform/last_error.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 8, kHeight = 8;  // cells of 2 x 2
constexpr std::uint32_t kEveryCode[] = {1,    2,    4,     8,         16,        0x10000,  0x20000, 32,
                                        64,   128,  256,   512,       0x100000,  0x200000, 1024,    2048,
                                        4096, 8192, 16384, 0x1000000, 0x2000000, 0x4000000};

class ControlSteps : public ChainTest {
  protected:
    using Means = CAveragePixelValue::Means;

    // R, Gr, Gb, B of the frame that was measured last.
    Means measured() {
        CAveragePixelValue::Weights weights;
        weights.fill(1);
        Means means{};
        record().statistics.GetWeightedAverage(weights, means);
        return means;
    }
    static bool isNothing(const Means& means) { return means == Means{}; }

    // A mosaic R G / G B with a level for each position.
    Bytes levels(std::uint8_t r, std::uint8_t gr, std::uint8_t gb, std::uint8_t b) const {
        Bytes raw(kWidth * kHeight);
        for (std::size_t i = 0; i < raw.size(); ++i) {
            const bool right = i % 2 != 0, below = i / kWidth % 2 != 0;
            raw[i] = below ? (right ? b : gb) : (right ? gr : r);
        }
        return raw;
    }
    // One run that only raw consumers want, of so many such frames.
    void runWithoutPreview(const Bytes& raw, std::size_t frames = 1) {
        Collected<SeenRaw> seen;
        std::uint32_t identifier = 0;
        ASSERT_TRUE(Tavra_AddRawCallback(handle, seeRaw, &seen, &identifier));
        start();
        for (std::uint32_t i = 0; i < frames; ++i) sendFrame(i, raw);
        ASSERT_EQ(seen.waitFor(frames).size(), frames);
        stopAndExpectCode(0);
        ASSERT_TRUE(Tavra_RemoveRawCallback(handle, identifier));
    }
    std::size_t exposureWrites() {
        std::size_t count = 0;
        for (const ControlTransfer& request : usb.requests()) {
            count += request.request == 33 && request.requestType == 0x40 ? 1 : 0;
        }
        return count;
    }
};

// Noise reduction.

TEST_F(ControlSteps, NoiseIsReducedWhereATriggerMakesTheExposure) {
    const struct {
        std::uint32_t word;
        bool reduces;
    } words[] = {{0x0000, false},     {0x0001, false},     {0x0003, false},   {0x1000, false},
                 {0x3000, false},     {0x0FFC, false},     {0x10001, false},  {0x1001, true},
                 {0x2001, true},      {0x1002, true},      {0x2002, true},    {0x3003, true},
                 {0xFFFFCFFF, false}, {0xFFFFFFFC, false}, {0xFFFFFFFF, true}};
    for (const auto& each : words) {
        SCOPED_TRACE(testing::Message() << std::hex << each.word);
        ASSERT_NO_FATAL_FAILURE(openWithTriggerWord(
            {.width = kWidth, .height = kHeight, .colorArray = 1, .previewFormat = 1}, each.word));
        ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_MEDIAN));
        Bytes raw(rawSize, 10), calm = raw;
        raw[kWidth + 3] = 200;  // among four neighbours of 10
        EXPECT_EQ(preview(raw).data, each.reduces ? calm : raw);
        close();
    }
}

TEST_F(ControlSteps, NoiseReductionGoesByTheTriggerWordOfTheStart) {
    const ChainFrame frame{.width = kWidth, .height = kHeight, .colorArray = 1, .previewFormat = 1};
    for (const bool reduces : {false, true}) {
        ASSERT_NO_FATAL_FAILURE(openWithTriggerWord(frame, reduces ? 0x1001 : 0));
        ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_MEDIAN));
        Bytes raw(rawSize, 10), calm = raw;
        raw[kWidth + 3] = 200;
        collectImages();
        start();
        usb.locked([&] { usb.camera().status(48) = reduces ? 0 : 0x1001; });
        sendFrame(1, raw);
        auto seen = images.waitFor(images.count() + 1);
        EXPECT_EQ(seen.back().data, reduces ? calm : raw);
        stopAndExpectCode(0);
        start();
        sendFrame(2, raw);
        seen = images.waitFor(images.count() + 1);
        EXPECT_EQ(seen.back().data, reduces ? raw : calm) << "the next run";
        stopAndExpectCode(0);
        ASSERT_TRUE(Tavra_RemoveAllPreviewBitmapCallback(handle));
        close();
    }
}

TEST_F(ControlSteps, NoiseIsReducedInRawClassesOnly) {
    for (const std::uint32_t code : kEveryCode) {
        SCOPED_TRACE(code);
        const ChainFrame frame{.width = kWidth,
                               .height = kHeight,
                               .transferBits = code,
                               .colorArray = 1,
                               .previewFormat = 1,
                               .reducesNoise = true};
        ASSERT_NO_FATAL_FAILURE(open(frame));
        const Bytes raw = noise(code);
        const Bytes noisy = preview(raw).data;
        ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_MEDIAN));
        EXPECT_EQ(preview(raw).data != noisy, transferClass(code).raw);
        close();
    }
}

// A dark frame is subtracted from every later one, and what cannot be done leaves the frame alone.
TEST_F(ControlSteps, ADarkFrameIsTakenAndSubtracted) {
    ASSERT_NO_FATAL_FAILURE(open(
        {.width = kWidth, .height = kHeight, .colorArray = 1, .previewFormat = 1, .reducesNoise = true}));
    Bytes dark(rawSize, 4), light(rawSize, 50), calm = light;
    dark[9] = 30;
    light[9] = 76;  // 26 above the black level of its position
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_DARK_FRAME));
    EXPECT_EQ(preview(light).data, light) << "there is no dark frame yet";
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME));
    EXPECT_EQ(preview(dark).data, dark);
    ASSERT_TRUE(Tavra_SetNoiseReductionMode(handle, TAVRA_NOISE_REDUCTION_DARK_FRAME));
    EXPECT_EQ(preview(light).data, calm);
}

// White balance and statistics.

TEST_F(ControlSteps, GainsAndStatisticsAreForRawClassesOnly) {
    for (const std::uint32_t code : kEveryCode) {
        SCOPED_TRACE(code);
        const bool isRaw = transferClass(code).raw;
        const ChainFrame frame{.width = kWidth, .height = kHeight, .transferBits = code, .colorArray = 2};
        ASSERT_NO_FATAL_FAILURE(open(frame));
        ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_OFF));
        const Bytes raw = noise(code);
        const Bytes plain = preview(raw).data;
        EXPECT_TRUE(isNothing(measured()));
        ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 60, 128, 128, 60));
        ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_CONTINUOUS));
        EXPECT_EQ(preview(raw).data != plain, isRaw);
        EXPECT_EQ(isNothing(measured()), !isRaw);
        close();
    }
}

TEST_F(ControlSteps, StatisticsAreMadeOnlyForAFrameThatIsDue) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 2}));
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_MANUAL));
    preview(levels(10, 20, 30, 40));
    runWithoutPreview(levels(10, 20, 30, 40));
    EXPECT_TRUE(isNothing(measured())) << "neither control runs";
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    runWithoutPreview(levels(10, 20, 30, 40));
    EXPECT_EQ(measured(), (Means{10, 20, 30, 40})) << "exposure runs";
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_OFF));
    runWithoutPreview(levels(11, 21, 31, 41));
    EXPECT_EQ(measured(), (Means{10, 20, 30, 40})) << "it does not any more";
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, TAVRA_WHITE_BALANCE_CONTINUOUS));
    runWithoutPreview(levels(12, 22, 32, 42));
    EXPECT_EQ(measured(), (Means{12, 22, 32, 42})) << "white balance runs";
}

// Four frames make a decision, three are left out behind it: those are not measured.
TEST_F(ControlSteps, FramesThatAControlLeavesOutAreNotMeasured) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 1}));
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    runWithoutPreview(Bytes(rawSize, 128), 4);
    ASSERT_EQ(measured()[0], 128);
    runWithoutPreview(Bytes(rawSize, 50), 3);
    EXPECT_EQ(measured()[0], 128);
    runWithoutPreview(Bytes(rawSize, 60), 1);
    EXPECT_EQ(measured()[0], 60);
}

TEST_F(ControlSteps, StatisticsSeeTheGainsOfTheFrameAndNotItsShading) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 2}));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 256, 128, 128, 64));
    const std::vector<std::int32_t> brighter(kWidth * kHeight, 50);
    ASSERT_TRUE(Tavra_SetShadingCorrectionMap(handle, kWidth, kHeight, 4 * kWidth, brighter.data()));
    ASSERT_TRUE(Tavra_SetShadingCorrectionMode(handle, 4));
    preview(levels(10, 20, 30, 40));
    EXPECT_EQ(measured(), (Means{20, 20, 30, 20}));
}

TEST_F(ControlSteps, StatisticsSeeTheFrameAsItLiesOnTheSensor) {
    ASSERT_NO_FATAL_FAILURE(
        open({.width = kWidth, .height = kHeight, .colorArray = 2, .mirror = 3, .rotation = 1}));
    preview(levels(10, 20, 30, 40));
    EXPECT_EQ(measured(), (Means{10, 20, 30, 40}));
}

// The controls.

// Frames of half the target: the exposure doubles, once in seven frames.
TEST_F(ControlSteps, ExposureIsControlledWithoutAPreview) {
    DoubleCamera& camera = describe(1, 1, kWidth, kHeight);
    camera.setCapability(3, 0);
    camera.setScan32(36, 99);     // lines of 100 clocks
    camera.setScan32(44, 500);    // fit a frame
    camera.setScan32(52, 70000);  // the longest
    camera.exposureBlock[2] = 40;
    StreamTest::open();
    ASSERT_TRUE(Tavra_SetShutterControlRange2(handle, 1, 0, 500, 0));
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    usb.forgetTraffic();
    runWithoutPreview(Bytes(rawSize, 64), 3);
    EXPECT_EQ(exposureWrites(), 0u) << "four frames are averaged";
    runWithoutPreview(Bytes(rawSize, 64), 1);
    EXPECT_EQ(exposureWrites(), 1u);
    std::uint32_t clocks = 0;
    ASSERT_TRUE(Tavra_GetExposureClock(handle, &clocks));
    EXPECT_EQ(clocks, 8000u);
    runWithoutPreview(Bytes(rawSize, 64), 3 + 3);
    EXPECT_EQ(exposureWrites(), 1u) << "three are left out, three more averaged";
    runWithoutPreview(Bytes(rawSize, 64), 1);
    EXPECT_EQ(exposureWrites(), 2u);
}

TEST_F(ControlSteps, WhiteBalanceIsControlledWithoutAPreview) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 2}));
    runWithoutPreview(levels(50, 100, 100, 200), 9);
    std::uint16_t r = 0, gr = 0, gb = 0, b = 0;
    ASSERT_TRUE(Tavra_GetWhiteBalanceGain(handle, &r, &gr, &gb, &b));
    EXPECT_EQ(r, 128);
    runWithoutPreview(levels(50, 100, 100, 200), 1);
    ASSERT_TRUE(Tavra_GetWhiteBalanceGain(handle, &r, &gr, &gb, &b));
    EXPECT_EQ(r, 256);
    EXPECT_EQ(gr, 128);
    EXPECT_EQ(gb, 128);
    EXPECT_EQ(b, 64);
}

// Each control is asked once a frame, also where the other one is due and where only a preview is wanted.
TEST_F(ControlSteps, TheControlsCountTheirFramesApart) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 2}));
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    // At rest: decisions of exposure with frame 4, 11, 18, of white balance with 10 and 30.
    runWithoutPreview(levels(128, 128, 128, 128), 10);
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_OFF));
    runWithoutPreview(levels(90, 90, 90, 90), 10);
    EXPECT_EQ(measured(), (Means{128, 128, 128, 128})) << "white balance leaves ten out";
    runWithoutPreview(levels(90, 90, 90, 90), 1);
    EXPECT_EQ(measured(), (Means{90, 90, 90, 90}));
}

// Failures.

TEST_F(ControlSteps, AFailedExposureStepEndsTheRunWithTheSystemsError) {
    DoubleCamera& camera = describe(1, 1, kWidth, kHeight);
    camera.setCapability(3, 0);
    camera.setScan32(36, 99);
    camera.setScan32(44, 500);
    camera.setScan32(52, 70000);
    camera.exposureBlock[2] = 40;
    StreamTest::open();
    ASSERT_TRUE(Tavra_SetShutterControlRange2(handle, 1, 0, 500, 0));
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    collectRaw();
    collectImages();
    start();
    record().lastError = 0;
    UsbDouble::Fault fault;
    fault.request = 33;
    fault.times = UsbDouble::kForever;
    fault.error = 121;
    usb.addFault(fault);
    for (std::uint32_t i = 1; i <= 4; ++i) sendFrame(i, Bytes(rawSize, 64));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), 121u);
    EXPECT_EQ(raws.waitFor(4).size(), 4u);
    EXPECT_EQ(images.count(), 3u) << "the fourth ends at the step";
    EXPECT_EQ(lastError(), 0u) << "the thread leaves it alone";
    EXPECT_TRUE(Tavra_StopTransfer(handle));
    usb.clearFaults();
    start();
    sendFrame(5, Bytes(rawSize, 64));
    EXPECT_EQ(images.waitFor(4).size(), 4u) << "a new run is free of it";
    stopAndExpectCode(0);
}

TEST_F(ControlSteps, WhiteBalanceThatCannotActDoesNotEndTheRun) {
    DoubleCamera& camera = describe(1, 2, kWidth, kHeight);
    camera.setCapability(1, 8);  // the camera does it
    StreamTest::open();
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 1));
    usb.failRequest(128);
    const Bytes raw = levels(10, 20, 30, 40);
    PlainChain plain({.width = kWidth, .height = kHeight, .colorArray = 2, .method = 1});
    EXPECT_EQ(preview(raw).data, plain.image(raw)) << "its gains are in the frame already";
    runWithoutPreview(raw, 25);
    EXPECT_TRUE(isNothing(measured()));
}

// A stage that fails with a code, and an error of the thread's own.
constexpr std::uint32_t kStageCode = 1450, kStageError = 5023;

class FailingMatrix final : public CountedStage<FailingMatrix, IColorMatrix> {
  public:
    std::uint32_t SetColorMatrix(std::uint8_t, const std::int16_t*) override { return 0; }
    std::uint32_t GetColorMatrix(std::uint8_t*, std::int16_t*) override { return 0; }
    std::uint32_t SetHueSaturation(std::uint8_t, std::int16_t, std::uint16_t) override { return 0; }
    std::uint32_t GetHueSaturation(std::uint8_t*, std::int16_t*, std::uint16_t*) override { return 0; }
    std::uint32_t Apply8(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint8_t*,
                         std::uint8_t) override {
        platform::setLastSystemError(kStageError);
        return kStageCode;
    }
    std::uint32_t Apply16(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t*,
                          std::uint8_t) override {
        return kStageCode;
    }
};

class FailingSharpness final : public CountedStage<FailingSharpness, ISharpness> {
  public:
    std::uint32_t SetMode(std::uint8_t, std::uint16_t, std::uint16_t) override { return 0; }
    std::uint32_t GetMode(std::uint8_t*, std::uint16_t*, std::uint16_t*) override { return 0; }
    std::uint32_t Apply16(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t*,
                          std::uint16_t) override {
        return kStageCode;
    }
    std::uint32_t Apply8(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint8_t*,
                         std::uint16_t) override {
        platform::setLastSystemError(kStageError);
        return kStageCode;
    }
};

class FailingSuppression final : public CountedStage<FailingSuppression, IChromaSuppress> {
  public:
    std::uint32_t Apply8(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint8_t*) override {
        platform::setLastSystemError(kStageError);
        return kStageCode;
    }
    std::uint32_t Apply16(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                          std::uint16_t*) override {
        return kStageCode;
    }
    std::uint32_t SetThreshold(std::uint16_t) override { return 0; }
    std::uint32_t GetThreshold(std::uint16_t*) override { return 0; }
    std::uint32_t SetStrength(std::uint16_t) override { return 0; }
    std::uint32_t GetStrength(std::uint16_t*) override { return 0; }
    std::uint32_t SetLowThreshold(std::uint16_t) override { return 0; }
    std::uint32_t GetLowThreshold(std::uint16_t*) override { return 0; }
    std::uint32_t SetLowStrength(std::uint16_t) override { return 0; }
    std::uint32_t GetLowStrength(std::uint16_t*) override { return 0; }
    std::uint32_t SetHighThreshold(std::uint16_t) override { return 0; }
    std::uint32_t GetHighThreshold(std::uint16_t*) override { return 0; }
    std::uint32_t SetHighStrength(std::uint16_t) override { return 0; }
    std::uint32_t GetHighStrength(std::uint16_t*) override { return 0; }
};

// Puts a stage of the test's in the place of the handle's, which the close releases in its stead.
template <typename Stage, typename Interface>
void replace(Interface*& stage) {
    stage->Release();
    stage = new Stage;
    stage->AddRef();
}

class FailingStages : public ControlSteps {
  protected:
    void expectEndAtFirstFrame(std::uint32_t code) {
        collectImages();
        start();
        record().lastError = 0;
        sendFrame(1, noise(1));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_TRANSFER_ENDED), code);
        EXPECT_EQ(images.count(), 0u);
        auto& set = record().imagesA;
        EXPECT_EQ(set.takeReady(), 1u) << "what was begun is published at the end";
        EXPECT_EQ(set.image(1).frameNumber, 1u);
        EXPECT_EQ(lastError(), 0u);
        close();
    }
    void expectNoHarm() {
        preview(noise(1));
        close();
    }
};

TEST_F(FailingStages, SharpnessEndsTheRunWithTheSystemsError) {
    for (const std::uint32_t code : {1u, 32u, 1024u, 16384u}) {
        SCOPED_TRACE(code);
        ASSERT_NO_FATAL_FAILURE(
            open({.width = kWidth, .height = kHeight, .transferBits = code, .colorArray = 2}));
        replace<FailingSharpness>(record().sharpness);
        expectEndAtFirstFrame(kStageError);
    }
}

TEST_F(FailingStages, TheColorMatrixEndsTheRunOfAColorFrame) {
    for (const std::uint32_t code : {1u, 1024u, 16384u}) {
        SCOPED_TRACE(code);
        ASSERT_NO_FATAL_FAILURE(
            open({.width = kWidth, .height = kHeight, .transferBits = code, .colorArray = 2}));
        replace<FailingMatrix>(record().colorMatrix);
        expectEndAtFirstFrame(kStageError);
    }
}

TEST_F(FailingStages, ChromaSuppressionEndsTheRunOfAColorFrame) {
    for (const std::uint32_t code : {1u, 1024u, 16384u}) {
        SCOPED_TRACE(code);
        ASSERT_NO_FATAL_FAILURE(
            open({.width = kWidth, .height = kHeight, .transferBits = code, .colorArray = 2}));
        replace<FailingSuppression>(record().chromaSuppress);
        expectEndAtFirstFrame(kStageError);
    }
}

TEST_F(FailingStages, AMonoFrameMeetsNeitherMatrixNorSuppression) {
    const struct {
        std::uint32_t code;
        std::uint16_t array;
    } frames[] = {{1, 1}, {1, 12}, {1, 15}, {32, 2}, {64, 2}};
    for (const auto& frame : frames) {
        SCOPED_TRACE(testing::Message() << frame.code << ", array " << frame.array);
        ASSERT_NO_FATAL_FAILURE(open(
            {.width = kWidth, .height = kHeight, .transferBits = frame.code, .colorArray = frame.array}));
        replace<FailingMatrix>(record().colorMatrix);
        replace<FailingSuppression>(record().chromaSuppress);
        expectNoHarm();
    }
}

TEST_F(FailingStages, WithoutAPreviewNoneOfThemIsMet) {
    ASSERT_NO_FATAL_FAILURE(open({.width = kWidth, .height = kHeight, .colorArray = 2}));
    ASSERT_TRUE(Tavra_SetALCMode(handle, TAVRA_ALC_SHUTTER));
    replace<FailingSharpness>(record().sharpness);
    replace<FailingMatrix>(record().colorMatrix);
    replace<FailingSuppression>(record().chromaSuppress);
    runWithoutPreview(noise(1), 2);
}

}  // namespace
}  // namespace tavra::test
