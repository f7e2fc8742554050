// The getters of exposure and geometry while another thread changes the format: what they give is of one
// format.
#include <algorithm>
#include <array>

#include "control_api/exposure_fixture.h"
#include "support/never_torn.h"

namespace tavra::test {
namespace {

class GeometryThreads : public ExposureTest {
  protected:
    // The geometry as a change of format leaves it: the scan record of another.
    std::function<void()> format(std::uint32_t maxClock, std::uint32_t shortLines, std::uint32_t longLines,
                                 std::uint16_t clocksPerLine) {
        DoubleCamera camera = limitedCamera();
        camera.setScan32(36, maxClock);
        camera.setScan32(44, shortLines);
        camera.setScan32(52, longLines);
        camera.setScan16(28, clocksPerLine);
        ScanRecord scan;
        std::ranges::copy_n(camera.scanRecord.begin(), 64, scan.bytes().begin());
        return [this, scan] { record().geometry->storeScanRecord(scan); };
    }
    std::vector<std::function<void()>> formats() {
        return {format(99, 50, 200, 780), format(999, 300, 5, 1234), format(9, 7, 100, 30)};
    }
};

TEST_F(GeometryThreads, ExposureClocks) {
    open(limitedCamera());
    // 10 lines and 7 clocks: 1007, the longest exposure of 5030, 107.
    neverTorn(formats(), [this] { return got(Tavra_GetExposureClock); });
}

TEST_F(GeometryThreads, LimitsOfTheExposure) {
    open(limitedCamera());
    neverTorn(formats(), [this] { return got(Tavra_GetMaxLongExposureClock); });
    neverTorn(formats(), [this] { return got(Tavra_GetMaxShortExposureClock); });
}

TEST_F(GeometryThreads, EndsOfTheRange) {
    open(limitedCamera());
    expectSuccess(Tavra_SetShutterControlRange2(handle, 3, 4, 5, 6));
    neverTorn(formats(), [this] { return got(Tavra_GetAEMaxExposureClock); });
    neverTorn(formats(), [this] { return got(Tavra_GetAEMinExposureClock); });
}

TEST_F(GeometryThreads, TimesOfClocks) {
    DoubleCamera camera = limitedCamera();
    camera.setIdentity16(4, 274);  // counts lines, up to the longest exposure
    open(camera);
    neverTorn(formats(), [this] {
        float seconds = 0;
        expectSuccess(Tavra_GetExposureTimeFromClock(handle, 0xFFFFFFFF, &seconds));
        return seconds;
    });
    neverTorn(formats(), [this] {
        std::uint32_t clocks = 0;
        expectSuccess(Tavra_GetExposureClockFromTime(handle, 1e6F, &clocks));
        return clocks;
    });
}

TEST_F(GeometryThreads, FrameClocksAndClock) {
    open(limitedCamera());
    neverTorn(formats(), [this] {
        std::array<std::uint16_t, 2> frame{};
        expectSuccess(Tavra_GetFrameClock(handle, &frame[0], &frame[1]));
        return frame;
    });
    neverTorn({[this] {
                   record().geometry->storeClock({0, 24545455});
               },
               [this] {
                   record().geometry->storeClock({0x80000000, 12000000});
               }},
              [this] {
                  std::array<std::uint32_t, 2> clock{};
                  expectSuccess(Tavra_GetClock(handle, &clock[0], &clock[1]));
                  return clock;
              });
}

}  // namespace
}  // namespace tavra::test
