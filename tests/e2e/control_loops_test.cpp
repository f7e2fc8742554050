// Exposure control and white balance settle, in the library and in the camera, on a grey card in light that
// is far from right.
#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <vector>

#include "e2e/grey_card.h"

namespace tavra::e2e {
namespace {

constexpr std::uint8_t kTarget = 128, kTolerance = 5, kThreshold = 5;
// Frames that left the camera before a change may still come through: more are left out than can be under
// way.
constexpr std::uint8_t kSkippedFrames = 30, kAveragedFrames = 2;
constexpr std::size_t kPeriod = kSkippedFrames + kAveragedFrames;  // frames from decision to decision

const std::string kSmall = ":width=64:height=48:pace=off:noise=off:sensor.hot_pixels=0:sensor.vignetting=0";
const std::string kBayer = "bayer:geometry.sensor_width=64:geometry.sensor_height=48" + kSmall;

// A family of gains whose setting values and decibels are each other's inverse.
const std::string kLinearGain = ":capability.word3=0x2881:sensor.gain_step_db=0.132";

// The mean of every frame, from a raw callback.
class MeanLog {
  public:
    explicit MeanLog(TavraHandle handle) {
        std::uint32_t identifier = 0;
        EXPECT_TRUE(Tavra_AddRawCallback(handle, &MeanLog::onRaw, this, &identifier));
    }

    // The means there are once there are so many.
    std::vector<double> waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(lock, std::chrono::milliseconds(kPatienceMs),
                                      [&] { return means_.size() >= count; }))
            << means_.size() << " of " << count << " frames came";
        return means_;
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return means_.size();
    }

  private:
    static void onRaw(void* data, std::uint32_t size, std::uint32_t, std::uint32_t, std::uint32_t,
                      std::uint16_t, std::uint32_t, void* context, std::uint32_t*) {
        const auto* const first = static_cast<const std::uint8_t*>(data);
        const double mean = std::accumulate(first, first + size, 0.0) / size;
        auto& log = *static_cast<MeanLog*>(context);
        const std::lock_guard lock(log.mutex_);
        log.means_.push_back(mean);
        log.changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<double> means_;
};

// How many decisions the way to the right exposure takes at most, when one multiplies it by no more than
// `factor`: those until it is less than a step away, that step, and one more where the level was read from
// too few of 255 steps to be exact.
std::size_t decisionsFor(double ratio, double factor) {
    std::size_t decisions = 2;
    for (; ratio > factor; ratio /= factor) ++decisions;
    return decisions;
}

struct Loop {
    const char* light;
    std::uint32_t divisor;  // of the exposure to begin with, by which the longest of a frame is divided
    double ratio;           // between what the level is and what it is to be, above 1
    std::uint8_t mode;
    double factor;  // of one decision

    friend void PrintTo(const Loop& loop, std::ostream* out) {
        *out << "light " << loop.light << ", exposure / " << loop.divisor << ", mode " << +loop.mode;
    }
};

class ExposureLoop : public testing::TestWithParam<Loop> {};

TEST_P(ExposureLoop, EndsInItsBandAndStays) {
    const GreyCard card;
    useCameras(kBayer + kLinearGain + card.key() + ":light=" + GetParam().light);
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_OFF));
    ASSERT_TRUE(Tavra_SetTargetBrightness(camera, kTarget, kTolerance, kThreshold));
    ASSERT_TRUE(Tavra_SetALCControlSpeed(camera, 0, 0, kSkippedFrames, kAveragedFrames));
    std::uint32_t start = 0, longest = 0;
    ASSERT_TRUE(Tavra_GetMaxShortExposureClock(camera, &start));
    ASSERT_TRUE(Tavra_GetMaxLongExposureClock(camera, &longest));
    if (GetParam().mode == TAVRA_ALC_SHUTTER) {
        ASSERT_TRUE(Tavra_SetAEMaxExposureClock(camera, longest));
    }
    ASSERT_TRUE(Tavra_SetExposureClock(camera, start / GetParam().divisor));
    ASSERT_TRUE(Tavra_SetALCMode(camera, GetParam().mode));

    MeanLog log(camera);
    camera.start();
    const std::size_t decisions = decisionsFor(GetParam().ratio, GetParam().factor);
    const std::size_t settled = decisions * kPeriod;
    log.waitFor(settled);
    std::uint32_t clocks = 0, clocksLater = 0;
    std::uint16_t gain = 0, gainLater = 0;
    ASSERT_TRUE(Tavra_GetExposureClock(camera, &clocks));
    ASSERT_TRUE(Tavra_GetGain(camera, &gain));
    const std::size_t now = log.count();
    const std::vector<double> means = log.waitFor(now + 4 * kPeriod);
    ASSERT_TRUE(Tavra_GetExposureClock(camera, &clocksLater));
    ASSERT_TRUE(Tavra_GetGain(camera, &gainLater));
    camera.stop();

    EXPECT_GT(std::abs(means.front() - kTarget), kTolerance + kThreshold) << "it was right from the start";
    for (std::size_t i = settled; i < means.size(); ++i) {
        // The loop reads a whole level below.
        ASSERT_NEAR(means[i], kTarget, kTolerance + 1)
            << "frame " << i << ", after " << decisions << " decisions";
    }
    EXPECT_EQ(clocksLater, clocks);
    EXPECT_EQ(gainLater, gain);
}

// The longest exposure of a frame makes 116 of the card in light 1. A white frame tells only that it is too
// bright: 255 against 128. With both, the shutter goes to its top first, and the gain brings the rest.
constexpr double kRest = 128 / 116.0;
constexpr double kWhite = 255 / 128.0;
INSTANTIATE_TEST_SUITE_P(Light, ExposureLoop,
                         testing::Values(Loop{"0.0625", 1, 16 * kRest, TAVRA_ALC_SHUTTER, 2},
                                         Loop{"16", 1, 16, TAVRA_ALC_SHUTTER, kWhite},
                                         Loop{"1", 16, 16 * kRest, TAVRA_ALC_SHUTTER_AND_GAIN, 2},
                                         Loop{"16", 1, 16, TAVRA_ALC_SHUTTER_AND_GAIN, kWhite},
                                         Loop{"0.125", 1, 8 * kRest, TAVRA_ALC_GAIN, 2}));

TEST(ExposureLoopInTheCamera, FollowsTheLight) {
    const GreyCard card;
    for (const std::string light : {"0.2", "4"}) {
        SCOPED_TRACE(light);
        useCameras("alc:geometry.sensor_width=64:geometry.sensor_height=48" + kSmall + card.key() +
                   ":light=" + light);
        Camera camera;
        ASSERT_TRUE(camera.isOpen());
        ASSERT_TRUE(Tavra_SetTargetBrightness(camera, 100, kTolerance, kThreshold));
        ASSERT_TRUE(Tavra_SetALCMode(camera, TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN));
        MeanLog log(camera);
        camera.start();
        // A factor of two with each frame: 4.4 and more takes three, and one is exact.
        const std::vector<double> means = log.waitFor(200);
        std::uint8_t mode = 0;
        ASSERT_TRUE(Tavra_GetALCMode(camera, &mode));
        EXPECT_EQ(mode, TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN);
        camera.stop();
        EXPECT_GT(std::abs(means.front() - 100), 10);
        for (std::size_t i = 20; i < means.size(); ++i) ASSERT_NEAR(means[i], 100, 4) << i;
    }
}

class WhiteBalanceLoop : public testing::TestWithParam<const char*> {};

TEST_P(WhiteBalanceLoop, MakesGreyGrey) {
    const GreyCard card;
    useCameras(kBayer + card.key() + ":light=0.9:kelvin=" + GetParam());
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(camera, 128, 128, 128, 128));
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_MANUAL));
    FrameLog images;
    images.takePreviewOf(camera);
    camera.start();
    const auto before = channelMeans(images.waitFor(1)[0].bytes);
    EXPECT_GT(std::abs(before[2] / before[0] - 1), 0.2) << "it was grey from the start";

    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_ONE_PUSH));
    // Twenty frames from decision to decision: one sets the gains, a second corrects what the coarse first
    // means were off, a third finds nothing to do.
    std::uint8_t mode = TAVRA_WHITE_BALANCE_ONE_PUSH;
    for (int decision = 0; decision < 4 && mode == TAVRA_WHITE_BALANCE_ONE_PUSH; ++decision) {
        images.waitFor(images.count() + 21);
        ASSERT_TRUE(Tavra_GetWhiteBalanceMode(camera, &mode));
    }
    EXPECT_EQ(mode, TAVRA_WHITE_BALANCE_MANUAL);
    expectGrey(takeNextPreview(camera));

    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_CONTINUOUS));
    images.waitFor(images.count() + 60);
    expectGrey(takeNextPreview(camera));
    camera.stop();
}

INSTANTIATE_TEST_SUITE_P(Kelvin, WhiteBalanceLoop, testing::Values("3000", "9000"));

TEST(WhiteBalanceLoopInTheCamera, MakesGreyGrey) {
    const GreyCard card;
    for (const std::string kelvin : {"3000", "9000"}) {
        for (const std::uint8_t mode : {TAVRA_WHITE_BALANCE_CONTINUOUS, TAVRA_WHITE_BALANCE_ONE_PUSH}) {
            SCOPED_TRACE(testing::Message() << kelvin << ", mode " << +mode);
            useCameras("wb:geometry.sensor_width=64:geometry.sensor_height=48" + kSmall + card.key() +
                       ":light=0.5:kelvin=" + kelvin);
            Camera camera;
            ASSERT_TRUE(camera.isOpen());
            FrameLog images;
            images.takePreviewOf(camera);
            camera.start();
            images.waitFor(1);
            ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, mode));
            images.waitFor(images.count() + 60);
            expectGrey(takeNextPreview(camera));
            std::uint8_t now = 0;
            ASSERT_TRUE(Tavra_GetWhiteBalanceMode(camera, &now));
            const bool isOnePush = mode == TAVRA_WHITE_BALANCE_ONE_PUSH;
            EXPECT_EQ(now, isOnePush ? TAVRA_WHITE_BALANCE_MANUAL : TAVRA_WHITE_BALANCE_CONTINUOUS);
            camera.stop();
        }
    }
}

}  // namespace
}  // namespace tavra::e2e
