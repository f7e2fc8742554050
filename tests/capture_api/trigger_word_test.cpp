// Triggers of a camera without registers: bits of the trigger word.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

TEST_F(TriggerTest, TheRawWordGoesOutAndTheScanInformationIsReadAgain) {
    openWordCamera(0);
    EXPECT_EQ(Tavra_SetTriggerMode(handle, 0x00031C41), 1);
    EXPECT_EQ(traffic(), (Traffic{writeStatus(0x8030, {0x41, 0x1C, 0x03, 0x00}), readScan()}));
    std::uint32_t mode = 0;
    EXPECT_EQ(Tavra_GetTriggerMode(handle, &mode), 1);
    EXPECT_EQ(mode, 0x00031C41u);
    EXPECT_EQ(traffic(), (Traffic{readStatus(48, 2)}));
}

TEST_F(TriggerTest, AFailedRereadOfTheScanInformationIsTheResult) {
    openWordCamera(0);
    usb.failRequest(18);
    EXPECT_EQ(Tavra_SetTriggerMode(handle, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(word(), 1u);
}

TEST_F(TriggerTest, SelectorsExistByFunctionAndCapability) {
    DoubleCamera& camera = usb.addCamera();
    open();
    // Without functions and with capability word 1 bit 13 clear only 0 and 4 are there.
    for (std::uint32_t selector = 0; selector < 8; ++selector) {
        EXPECT_EQ(Tavra_IsTriggerSelectorSupported(handle, selector), selector == 0 || selector == 4)
            << selector;
    }
    Tavra_Close(handle);
    camera.setCapability(16, 14);
    camera.setCapability(0, 1);
    camera.setCapability(1, 13);
    open();
    for (std::uint32_t selector = 0; selector < 8; ++selector) {
        EXPECT_EQ(Tavra_IsTriggerSelectorSupported(handle, selector), selector < 4) << selector;
    }
    EXPECT_TRUE(traffic().empty());
}

struct WordStep {
    std::uint32_t selector, value, before, after;
};

TEST_F(TriggerTest, SwitchingChangesTheLowPairOfTheWord) {
    openWordCamera(0);
    const WordStep steps[] = {
        {0, 0, 0xFFFF, 0xFFFC}, {0, 1, 0x3C40, 0x3C41}, {0, 1, 2, 2}, {0, 1, 3, 3}, {1, 1, 0, 1},
        {2, 0, 2, 0},           {3, 1, 0x10, 0x11},     {4, 1, 0, 2}, {4, 1, 1, 2}, {4, 1, 3, 2},
        {4, 0, 2, 1},           {4, 0, 0, 0},           {4, 0, 1, 1}, {4, 0, 3, 3}, {4, 0, 0xFFFE, 0xFFFD}};
    for (const WordStep& step : steps) {
        setWord(step.before);
        ASSERT_EQ(Tavra_SetTriggerMode2(handle, step.selector, step.value), 1);
        EXPECT_EQ(word(), step.after) << "selector " << step.selector << " value " << step.value
                                      << " before 0x" << std::hex << step.before;
        EXPECT_EQ(traffic(),
                  (Traffic{readStatus(48, 2), writeStatus(0x8030, word32(step.after)), readScan()}));
    }
}

TEST_F(TriggerTest, SwitchingNeedsASelectorAndZeroOrOne) {
    usb.addCamera();
    open();
    for (const auto& [selector, value] :
         {std::pair{1u, 1u}, {2u, 1u}, {3u, 0u}, {5u, 0u}, {0u, 2u}, {4u, 9u}}) {
        EXPECT_EQ(Tavra_SetTriggerMode2(handle, selector, value), 0);
        EXPECT_EQ(lastError(), 87u);
    }
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, TheModeIsReadFromTheWord) {
    openWordCamera(0);
    const struct {
        std::uint32_t word, selector, value;
    } rows[] = {{0, 0, 0},      {1, 0, 1},      {2, 0, 1},      {3, 2, 1}, {0x2000, 3, 0}, {0x2001, 3, 1},
                {0x2002, 3, 1}, {0x1001, 3, 0}, {0x3001, 3, 0}, {1, 4, 0}, {2, 4, 1},      {3, 4, 0}};
    for (const auto& row : rows) {
        setWord(row.word);
        std::uint32_t value = 77;
        EXPECT_EQ(Tavra_GetTriggerMode2(handle, row.selector, &value), 1);
        EXPECT_EQ(value, row.value) << std::hex << row.word << " selector " << row.selector;
    }
    traffic();
    std::uint32_t value = 77;
    EXPECT_EQ(Tavra_GetTriggerMode2(handle, 1, &value), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(value, 0u);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, TheSourceIsBits10And11AndBit6ForSelector4) {
    openWordCamera(0xFFFFF3FF);
    ASSERT_EQ(Tavra_SetTriggerSource(handle, 0, 2), 1);
    EXPECT_EQ(word(), 0xFFFFFBFFu);
    EXPECT_EQ(traffic(), (Traffic{readStatus(48, 2), writeStatus(0x8030, word32(0xFFFFFBFF)), readScan()}));
    ASSERT_EQ(Tavra_SetTriggerSource(handle, 3, 1), 1);
    EXPECT_EQ(word(), 0xFFFFF7FFu);
    ASSERT_EQ(Tavra_SetTriggerSource(handle, 4, 1), 1);
    EXPECT_EQ(word(), 0xFFFFF7BFu);
    ASSERT_EQ(Tavra_SetTriggerSource(handle, 4, 2), 1);
    EXPECT_EQ(word(), 0xFFFFF7FFu);
    for (const auto& [selector, source] : {std::pair{0u, 3u}, {1u, 0u}, {4u, 3u}, {5u, 0u}}) {
        EXPECT_EQ(Tavra_SetTriggerSource(handle, selector, source), 0) << selector << ' ' << source;
        EXPECT_EQ(lastError(), 87u);
    }
}

TEST_F(TriggerTest, TheSourceIsReadFromTheWord) {
    openWordCamera(0);
    const struct {
        std::uint32_t word, selector, source;
    } rows[] = {{0x800, 0, 2},  {0xC00, 2, 3}, {0x2400, 3, 1}, {0x1400, 3, 0},
                {0x0400, 3, 0}, {0x40, 4, 2},  {0, 4, 1},      {0xFFFFFFFF, 1, 0}};
    for (const auto& row : rows) {
        setWord(row.word);
        std::uint32_t source = 77;
        EXPECT_EQ(Tavra_GetTriggerSource(handle, row.selector, &source), 1);
        EXPECT_EQ(source, row.source) << std::hex << row.word << " selector " << row.selector;
    }
}

TEST_F(TriggerTest, SoftwareTriggersByWord) {
    openWordCamera(0);
    for (const std::uint32_t selector : {0u, 2u}) {
        EXPECT_EQ(Tavra_TriggerSoftware(handle, selector), 1);
        EXPECT_EQ(traffic(), (Traffic{toDevice(48, 0, 0)}));
    }
    EXPECT_EQ(Tavra_TriggerSoftware(handle, 3), 1);
    EXPECT_EQ(traffic(), (Traffic{command(16384)}));
    EXPECT_EQ(Tavra_TriggerSoftware(handle, 4), 1);
    EXPECT_EQ(traffic(), (Traffic{command(4)}));
    for (const std::uint32_t selector : {1u, 5u}) {
        EXPECT_EQ(Tavra_TriggerSoftware(handle, selector), 0);
        EXPECT_EQ(lastError(), 87u);
    }
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, PlainCommands) {
    openWordCamera(0);
    EXPECT_EQ(Tavra_SoftTrigger(handle), 1);
    EXPECT_EQ(Tavra_SoftSubTrigger(handle), 1);
    EXPECT_EQ(Tavra_TriggerReadOut(handle), 1);
    EXPECT_EQ(Tavra_ResetCounter(handle), 1);
    EXPECT_EQ(traffic(), (Traffic{toDevice(48, 0, 0), command(16384), command(4), command(2)}));
}

TEST_F(TriggerTest, TimingsAreEveryOtherAddressFrom50) {
    openWordCamera(0);
    for (std::uint16_t index = 0; index < 6; ++index) {
        EXPECT_EQ(Tavra_SetTriggerTiming(handle, index, 0x12345678), 1);
        EXPECT_EQ(
            traffic(),
            (Traffic{writeStatus(static_cast<std::uint16_t>(0x8032 + 2 * index), {0x78, 0x56, 0x34, 0x12})}));
        std::uint32_t value = 0;
        EXPECT_EQ(Tavra_GetTriggerTiming(handle, index, &value), 1);
        EXPECT_EQ(value, 0x12345678u);
        EXPECT_EQ(traffic(), (Traffic{readStatus(static_cast<std::uint16_t>(50 + 2 * index), 2)}));
    }
    EXPECT_EQ(Tavra_SetTriggerTiming(handle, 9, 5), 1);
    EXPECT_EQ(traffic(), (Traffic{writeStatus(0x8032, {5, 0, 0, 0})}));
    std::uint32_t value = 0;
    EXPECT_EQ(Tavra_GetTriggerTiming(handle, 6, &value), 1);
    EXPECT_EQ(value, 5u);
}

TEST_F(TriggerTest, TheDelayIsStatus50WithoutRegisters) {
    openWordCamera(0);
    EXPECT_EQ(Tavra_SetTriggerDelay(handle, 0, 0x10002), 1);
    EXPECT_EQ(traffic(), (Traffic{writeStatus(0x8032, {2, 0, 1, 0})}));
    std::uint32_t delay = 0;
    EXPECT_EQ(Tavra_GetTriggerDelay(handle, 3, &delay), 1);
    EXPECT_EQ(delay, 0x10002u);
    EXPECT_EQ(Tavra_SetTriggerDelay(handle, 5, 1), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(Tavra_GetTriggerDelay(handle, 7, &delay), 0);
    EXPECT_EQ(delay, 0u);
}

TEST_F(TriggerTest, ALegacyCameraRefusesTheWordWithoutATransfer) {
    usb.addCamera().setIdentity16(4, 1541);
    open();
    std::uint32_t value = 77;
    EXPECT_EQ(Tavra_SetTriggerMode(handle, 1), 0);
    EXPECT_EQ(lastError(), 0xE0000021u);
    EXPECT_EQ(Tavra_GetTriggerMode(handle, &value), 0);
    EXPECT_EQ(Tavra_GetTriggerMode2(handle, 0, &value), 0);
    EXPECT_EQ(lastError(), 0xE0000021u);
    EXPECT_EQ(Tavra_SoftSubTrigger(handle), 0);
    EXPECT_TRUE(traffic().empty());
    EXPECT_EQ(Tavra_IsTriggerSelectorSupported(handle, 4), 1);
    EXPECT_EQ(Tavra_IsTriggerSelectorSupported(handle, 0), 0) << "a legacy type has no functions";
}

TEST_F(TriggerTest, AMissingOutputIs87) {
    openWordCamera(0);
    EXPECT_EQ(Tavra_GetTriggerMode(handle, nullptr), 0);
    EXPECT_EQ(Tavra_GetTriggerSource(handle, 0, nullptr), 0);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_TRUE(traffic().empty());
}

}  // namespace
}  // namespace tavra::test
