// A window whose display mode cannot be had, and the one that the application makes in its place.
#include <ostream>

#include "display_seams/window_fixture.h"

namespace tavra::test {
namespace {

using testing::Contains;

// Libraries that are missing, and a device that none can make.
struct Failure {
    const char* operation;
    std::uint32_t code;
};

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << failure.operation << " " << failure.code;
}

class FailedCreation : public PreviewOnSeams, public testing::WithParamInterface<Failure> {
  protected:
    TavraBool create() {
        forgetPlaces();
        return Tavra_CreatePreviewWindowW(handle, u"Preview", 0, 20, 30, 0, 0, nullptr, nullptr, 1);
    }
    void expectNoWindow() {
        TavraWindow found = this;
        EXPECT_FALSE(Tavra_GetPreviewWnd(handle, &found));
        EXPECT_EQ(lastError(), std::uint32_t{TAVRA_ERROR_NO_WINDOW});
        EXPECT_FALSE(window().locked([](WindowDouble& double_) { return double_.exists; }));
    }
    void expectTextured() {
        ASSERT_TRUE(create()) << lastError();
        expectMessage(TAVRA_MESSAGE_WINDOW_CREATED);
        TavraDC dc = nullptr;
        EXPECT_TRUE(Tavra_GetDC(handle, &dc));
        EXPECT_NE(dc, nullptr);
        EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    }
};

INSTANTIATE_TEST_SUITE_P(Failures, FailedCreation,
                         testing::Values(Failure{"object", 126}, Failure{"device", 0x8876086A}),
                         [](const auto& failure) { return "Of_" + std::string(failure.param.operation); });

TEST_P(FailedCreation, OfATexturedModeIsTheLastErrorAndAnotherModeWorks) {
    openMono();
    for (const std::uint8_t mode : {5, 6, 7, 9, 10, 11}) {
        seams().sprites.results = {{GetParam().operation, GetParam().code}};
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        record().lastError = 0;
        EXPECT_FALSE(create());
        EXPECT_EQ(lastError(), GetParam().code) << +mode;
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED), 0u) << "nothing was drawn";
        expectNoMessage();  // of a creation
        expectNoWindow();
        // Neither the system nor the window stands in the way of a plain one.
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, 0));
        ASSERT_TRUE(create()) << lastError();
        expectMessage(TAVRA_MESSAGE_WINDOW_CREATED);
        RecordingPaint paint;
        window().events().onPaint(paint, {16, 14});
        EXPECT_THAT(paint.log, Contains("copy 0,0,6,4 from 0,0"));
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED);
    }
}

TEST_P(FailedCreation, IsNotForEver) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 5));
    seams().sprites.results = {{GetParam().operation, GetParam().code}};
    EXPECT_FALSE(create());
    expectMessage(TAVRA_MESSAGE_WINDOW_CLOSED);
    seams().sprites.results.clear();
    expectTextured();
}

}  // namespace
}  // namespace tavra::test
