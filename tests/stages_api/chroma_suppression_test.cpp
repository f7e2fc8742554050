// Chroma suppression of an open camera.
#include "camera_api/camera_fixture.h"
#include "stages/chroma_suppress.h"

namespace tavra::test {
namespace {

using Setter = TavraBool (*)(TavraHandle, std::uint16_t, std::uint16_t);
using Getter = TavraBool (*)(TavraHandle, std::uint16_t*, std::uint16_t*);

struct Calls {
    Setter set;
    Getter get;
};

constexpr Calls kPlain = {Tavra_SetChromaSuppression, Tavra_GetChromaSuppression};
constexpr Calls kHigh = {Tavra_SetHighChromaSuppression, Tavra_GetHighChromaSuppression};
constexpr Calls kLow = {Tavra_SetLowChromaSuppression, Tavra_GetLowChromaSuppression};

class ChromaCalls : public CameraTest {
  protected:
    ChromaCalls() { open(); }

    void expectValues(const Calls& calls, std::uint16_t threshold, std::uint16_t strength) {
        std::uint16_t readThreshold = 999, readStrength = 999;
        expectSuccess(calls.get(handle, &readThreshold, &readStrength));
        EXPECT_EQ(readThreshold, threshold);
        EXPECT_EQ(readStrength, strength);
    }
};

TEST_F(ChromaCalls, AreOffAtFirst) {
    expectValues(kPlain, 255, 0);
    expectValues(kHigh, 255, 0);
    expectValues(kLow, 0, 0);
}

TEST_F(ChromaCalls, ThePlainOnesAreThoseOfTheHighlights) {
    expectSuccess(kPlain.set(handle, 200, 30));
    expectValues(kHigh, 200, 30);
    expectSuccess(kHigh.set(handle, 190, 40));
    expectValues(kPlain, 190, 40);
    expectValues(kLow, 0, 0);
    EXPECT_THAT(traffic(), IsEmpty()) << "a matter of the computer alone";
}

TEST_F(ChromaCalls, TheShadowsHaveTheirOwn) {
    expectSuccess(kLow.set(handle, 20, 255));
    expectValues(kLow, 20, 255);
    expectValues(kHigh, 255, 0);
}

TEST_F(ChromaCalls, ValuesAbove255ActAs255) {
    for (const Calls& calls : {kPlain, kHigh, kLow}) {
        expectSuccess(calls.set(handle, 256, 7));
        expectValues(calls, 255, 7);
        expectSuccess(calls.set(handle, 7, 65535));
        expectValues(calls, 7, 255);
    }
    std::uint16_t stored = 0;
    record().chromaSuppress->GetHighStrength(&stored);
    EXPECT_EQ(stored, 255) << "limited on the way in";
    record().chromaSuppress->SetLowThreshold(300);
    record().chromaSuppress->SetLowStrength(301);
    expectValues(kLow, 255, 255);
}

TEST_F(ChromaCalls, OutputsAreRequired) {
    std::uint16_t value = 9;
    for (const Calls& calls : {kPlain, kHigh, kLow}) {
        expectFailure(calls.get(handle, nullptr, &value), 87);
        expectFailure(calls.get(handle, &value, nullptr), 87);
    }
    EXPECT_EQ(value, 9);
}

TEST_F(ChromaCalls, NeedAHandle) {
    std::uint16_t value = 0;
    for (const Calls& calls : {kPlain, kHigh, kLow}) {
        EXPECT_EQ(calls.set(nullptr, 1, 1), 0);
        EXPECT_EQ(calls.get(nullptr, &value, &value), 0);
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    }
}

}  // namespace
}  // namespace tavra::test
