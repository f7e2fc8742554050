#include "settle.h"

#include <chrono>
#include <cstdio>

#include "control_state.h"
#include "settings_table.h"

namespace tavra::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kPollMs = 20;
constexpr auto kLineEvery = std::chrono::milliseconds(500);

// The modes that run once tell themselves when they rest. What one control does moves the ground of the
// other, so both go again until a round leaves everything as it was.
class Settling {
  public:
    Settling(const Camera& camera, bool balance) : camera_(camera), color_(!isMonoLike(camera)) {
        std::uint32_t modes = 0;
        camera_.check(Tavra_GetEnableWhiteBalanceMode(camera_.handle(), &modes),
                      "cannot read the white balance");
        balances_ = balance && whiteBalanceActs(camera) && (modes >> TAVRA_WHITE_BALANCE_ONE_PUSH & 1) != 0;
        if (color_ && !whiteBalanceActs(camera)) {
            camera_.check(Tavra_SetWhiteBalanceMode(camera_.handle(), TAVRA_WHITE_BALANCE_OFF),
                          "cannot switch the white balance off");
        }
        std::uint8_t mode = 0;
        camera_.check(Tavra_GetALCMode(camera_.handle(), &mode), "cannot read the exposure control");
        if (mode == TAVRA_ALC_SHUTTER || mode == TAVRA_ALC_SHUTTER_ONCE)
            exposureMode_ = TAVRA_ALC_SHUTTER_ONCE;
        if (mode == TAVRA_ALC_GAIN || mode == TAVRA_ALC_GAIN_ONCE) exposureMode_ = TAVRA_ALC_GAIN_ONCE;
    }

    bool color() const { return color_; }

    void begin() {
        atBegin_ = state();
        camera_.check(Tavra_SetALCMode(camera_.handle(), exposureMode_), "cannot start the exposure control");
        if (!balances_) return;
        camera_.check(Tavra_SetWhiteBalanceMode(camera_.handle(), TAVRA_WHITE_BALANCE_ONE_PUSH),
                      "cannot start the white balance");
    }

    // Both as they are in force from now on.
    void end() {
        camera_.check(Tavra_SetALCMode(camera_.handle(), TAVRA_ALC_OFF), "cannot stop the exposure control");
        if (!balances_) return;
        camera_.check(Tavra_SetWhiteBalanceMode(camera_.handle(), TAVRA_WHITE_BALANCE_MANUAL),
                      "cannot stop the white balance");
    }

    bool exposureRests() const {
        std::uint8_t mode = 0;
        camera_.check(Tavra_GetALCMode(camera_.handle(), &mode), "cannot read the exposure control");
        return mode == TAVRA_ALC_OFF;
    }

    bool whiteBalanceRests() const {
        if (!balances_) return true;
        std::uint8_t mode = 0;
        camera_.check(Tavra_GetWhiteBalanceMode(camera_.handle(), &mode), "cannot read the white balance");
        return mode == TAVRA_WHITE_BALANCE_MANUAL;
    }

    bool nothingMoved() const {
        const ControlState now = state();
        return now.sameExposure(atBegin_) && now.sameWhiteBalance(atBegin_);
    }

    ControlState state() const { return readControlState(camera_, color_); }

  private:
    const Camera& camera_;
    bool color_;
    std::uint8_t exposureMode_ = TAVRA_ALC_SHUTTER_AND_GAIN_ONCE;
    bool balances_ = false;
    ControlState atBegin_;
};

}  // namespace

bool leavesWhiteBalance(const std::vector<std::string>& assignments) {
    bool leaves = false;
    for (const std::string& assignment : assignments) {
        if (assignment.starts_with("wb=")) leaves = assignment == "wb=manual" || assignment == "wb=off";
    }
    return leaves;
}

std::string Settled::text() const {
    char time[32];
    std::snprintf(time, sizeof time, "%.1f s: ", seconds);
    if (both()) return std::string("settled in ") + time + state;
    const std::string what = exposure       ? "white balance"
                             : whiteBalance ? "exposure"
                                            : "exposure and white balance";
    return what + " had not settled after " + time + state;
}

Settled settleControls(const Camera& camera, const StreamSession& stream, bool balance, double limitSeconds,
                       LiveLine& live) {
    requireMosaicFormat(camera, "automatic control");
    Settling settling(camera, balance);
    Settled settled;
    const Clock::time_point start = Clock::now();
    Clock::time_point lastLine = start - kLineEvery;
    settling.begin();
    while (settled.seconds < limitSeconds) {
        stream.run(kPollMs);
        settled.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        if (Clock::now() - lastLine >= kLineEvery) {
            live.show(settling.state().text(settling.color()));
            lastLine = Clock::now();
        }
        settled.exposure = settling.exposureRests();
        settled.whiteBalance = settling.whiteBalanceRests();
        if (!settled.both()) continue;
        if (settling.nothingMoved()) break;
        settling.begin();
        settled.exposure = settled.whiteBalance = false;
    }
    settling.end();
    settled.state = settling.state().text(settling.color());
    return settled;
}

}  // namespace tavra::tool
