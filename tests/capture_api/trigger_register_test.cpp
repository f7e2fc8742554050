// Triggers of a camera with register pages.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kModeOffsets[] = {44, 64, 88, 108};
constexpr std::uint32_t kSourceOffsets[] = {48, 68, 92, 112};

TEST_F(TriggerTest, SeparateSetsWriteTheSelectorsOwnRegisterThenClearAndApply) {
    openRegisterCamera(true);
    for (std::uint32_t selector = 0; selector < 4; ++selector) {
        EXPECT_EQ(Tavra_SetTriggerMode2(handle, selector, 1), 1);
        EXPECT_EQ(traffic(),
                  (Traffic{writeRegister(2, kModeOffsets[selector], 1), clearBuffer(), command(1)}));
        std::uint32_t value = 0;
        EXPECT_EQ(Tavra_GetTriggerMode2(handle, selector, &value), 1);
        EXPECT_EQ(value, 1u);
        EXPECT_EQ(traffic(), (Traffic{readRegister(2, kModeOffsets[selector])}));
    }
    std::uint32_t value = 77;
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 4, 1), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(Tavra_GetTriggerMode2(handle, 4, &value), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(value, 0u);
}

TEST_F(TriggerTest, WithoutSeparateSetsSelectors0And2ShareARegister) {
    openRegisterCamera(false);
    for (const std::uint32_t selector : {0u, 2u}) {
        EXPECT_EQ(Tavra_SetTriggerMode2(handle, selector, 1), 1);
        EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 44, 1), clearBuffer(), command(1)}));
    }
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 1, 0), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 64, 0), clearBuffer(), command(1)}));
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 4, 1), 0);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(TriggerTest, WithoutSeparateSetsSelector3WritesOnlyInExposureMode3) {
    openRegisterCamera(false);
    acquisition(24) = 2;
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 3, 1), 1);
    EXPECT_EQ(traffic(), (Traffic{readRegister(2, 24)}));
    acquisition(24) = 3;
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 3, 1), 1);
    EXPECT_EQ(traffic(), (Traffic{readRegister(2, 24), writeRegister(2, 44, 1), clearBuffer(), command(1)}));
}

TEST_F(TriggerTest, WithoutSeparateSetsTheModeDependsOnTheExposureMode) {
    openRegisterCamera(false);
    acquisition(44) = 1;
    acquisition(64) = 1;
    const struct {
        std::uint32_t exposureMode, selector, value;
    } rows[] = {{0, 0, 1}, {3, 2, 1}, {1, 1, 1}, {2, 1, 0}, {3, 1, 0}, {3, 3, 1}, {2, 3, 0}};
    for (const auto& row : rows) {
        acquisition(24) = row.exposureMode;
        std::uint32_t value = 77;
        EXPECT_EQ(Tavra_GetTriggerMode2(handle, row.selector, &value), 1);
        EXPECT_EQ(value, row.value) << row.exposureMode << " selector " << row.selector;
    }
}

TEST_F(TriggerTest, AFailedRegisterWriteStillClearsAndAppliesAndItsErrorWins) {
    openRegisterCamera(true);
    usb.failRequest(130);
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 44, 1), clearBuffer(), command(1)}));
}

TEST_F(TriggerTest, ARegisterOutsideItsPageGives87AndStillClearsAndApplies) {
    DoubleCamera& camera = describe();
    camera.addRegisterPages(40);  // bytes: offset 44 is not in the page
    camera.setCapability(kSeparateSetsWord, kSeparateSetsBit);
    open();
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(traffic(), (Traffic{clearBuffer(), command(1)}));
}

// The requests behind a register write that went well: each goes out whatever became of the one before.
TEST_F(TriggerTest, AFailedClearIsToldAndTheChangeIsStillApplied) {
    openRegisterCamera(true);
    usb.failRequest(32);
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 1, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 64, 1), clearBuffer(), command(1)}));
    EXPECT_EQ(acquisition(64), 1u);
}

TEST_F(TriggerTest, AFailedApplyIsTold) {
    openRegisterCamera(true);
    failCommand();
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 2, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 88, 1), clearBuffer(), command(1)}));
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 2, 0), 1) << "the fault was for one";
}

TEST_F(TriggerTest, AnApplyThatComesShortIsTold) {
    openRegisterCamera(true);
    failCommand(1);
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
}

TEST_F(TriggerTest, TheFailureOfTheRegisterWriteWinsOverThoseBehindIt) {
    DoubleCamera& camera = describe();
    camera.addRegisterPages(40);  // bytes: offset 44 is not in the page
    camera.setCapability(kSeparateSetsWord, kSeparateSetsBit);
    open();
    usb.failRequest(32);
    failCommand();
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 87u) << "not that of the two transfers that failed as well";
    EXPECT_EQ(traffic(), (Traffic{clearBuffer(), command(1)}));
}

TEST_F(TriggerTest, AnExposureModeThatCannotBeReadEndsSelector3) {
    openRegisterCamera(false);
    usb.failRequest(130);
    EXPECT_EQ(Tavra_SetTriggerMode2(handle, 3, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(traffic(), (Traffic{readRegister(2, 24)}));
}

// Selector 4 has its source in the trigger word only.
TEST_F(TriggerTest, Selector4HasNoSourceRegister) {
    for (const bool separateSets : {true, false}) {
        usb.reset();
        openRegisterCamera(separateSets);
        ASSERT_EQ(Tavra_IsTriggerSelectorSupported(handle, 4), 1);
        for (const std::uint32_t source : {0u, 1u, 2u}) {
            EXPECT_EQ(Tavra_SetTriggerSource(handle, 4, source), 0);
            EXPECT_EQ(lastError(), 87u);
        }
        std::uint32_t source = 77;
        EXPECT_EQ(Tavra_GetTriggerSource(handle, 4, &source), 0);
        EXPECT_EQ(lastError(), 87u);
        EXPECT_EQ(source, 0u);
        EXPECT_TRUE(traffic().empty());
        Tavra_Close(handle);
        handle = nullptr;
    }
}

TEST_F(TriggerTest, AFailedApplyOfASourceIsTold) {
    openRegisterCamera(true);
    failCommand();
    EXPECT_EQ(Tavra_SetTriggerSource(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(acquisition(48), 1u);
}

TEST_F(TriggerTest, AFailedSourceRegisterIsNotApplied) {
    openRegisterCamera(true);
    usb.failRequest(130);
    EXPECT_EQ(Tavra_SetTriggerSource(handle, 0, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 48, 1)}));
}

TEST_F(TriggerTest, SourcesWithSeparateSetsAreBelow6) {
    openRegisterCamera(true);
    for (std::uint32_t selector = 0; selector < 4; ++selector) {
        EXPECT_EQ(Tavra_SetTriggerSource(handle, selector, 5), 1);
        EXPECT_EQ(traffic(), (Traffic{writeRegister(2, kSourceOffsets[selector], 5), command(1)}));
        std::uint32_t source = 0;
        EXPECT_EQ(Tavra_GetTriggerSource(handle, selector, &source), 1);
        EXPECT_EQ(source, 5u);
        EXPECT_EQ(Tavra_SetTriggerSource(handle, selector, 6), 0);
        EXPECT_EQ(lastError(), 87u);
        traffic();
    }
    EXPECT_EQ(Tavra_SetTriggerSource(handle, 4, 1), 0);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(TriggerTest, SourcesWithoutSeparateSetsAreAtMost2ExceptSelector1) {
    openRegisterCamera(false);
    for (const std::uint32_t selector : {0u, 2u, 3u}) {
        EXPECT_EQ(Tavra_SetTriggerSource(handle, selector, 2), 1);
        EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 48, 2), command(1)}));
        EXPECT_EQ(Tavra_SetTriggerSource(handle, selector, 3), 0);
        EXPECT_EQ(lastError(), 87u);
    }
    EXPECT_EQ(Tavra_SetTriggerSource(handle, 1, 5), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 68, 5), command(1)}));
    std::uint32_t source = 0;
    EXPECT_EQ(Tavra_GetTriggerSource(handle, 1, &source), 1);
    EXPECT_EQ(source, 5u);
    EXPECT_EQ(Tavra_GetTriggerSource(handle, 3, &source), 1);
    EXPECT_EQ(source, 2u);
}

TEST_F(TriggerTest, TheDelayIsARegister) {
    openRegisterCamera(false);
    EXPECT_EQ(Tavra_SetTriggerDelay(handle, 2, 70000), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 52, 70000)}));
    std::uint32_t delay = 0;
    EXPECT_EQ(Tavra_GetTriggerDelay(handle, 0, &delay), 1);
    EXPECT_EQ(delay, 70000u);
}

TEST_F(TriggerTest, SoftwareTriggersAreAMaskInARegister) {
    openRegisterCamera(false);
    const std::uint32_t shared[] = {1, 8, 1, 2, 4};
    for (std::uint32_t selector = 0; selector < 5; ++selector) {
        EXPECT_EQ(Tavra_TriggerSoftware(handle, selector), 1);
        EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 40, shared[selector])}));
    }
    Tavra_Close(handle);
    usb.camera().setCapability(kSeparateSetsWord, kSeparateSetsBit);
    open();
    EXPECT_EQ(Tavra_TriggerSoftware(handle, 2), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 40, 16)}));
    EXPECT_EQ(Tavra_TriggerSoftware(handle, 5), 0);
    EXPECT_EQ(lastError(), 87u);
}

}  // namespace
}  // namespace tavra::test
