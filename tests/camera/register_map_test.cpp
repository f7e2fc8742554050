#include "camera/register_map.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "base/little_endian.h"

namespace tavra {
namespace {

// Registers of 32 bits by address, and what was asked of them.
class FakeRegisters : public IHalvernRegMap {
  public:
    std::uint32_t Read(std::uint32_t address, void* buffer, std::uint16_t size) override {
        reads.emplace_back(address, size);
        if (reads.size() > readsThatWork) return 0xE0000005;
        auto* const bytes = static_cast<std::uint8_t*>(buffer);
        for (std::uint16_t i = 0; i < size; i += 4) storeLe32(bytes + i, values[address + i]);
        return 0;
    }
    std::uint32_t Write(std::uint32_t address, const void* buffer, std::uint16_t size) override {
        EXPECT_EQ(size, 4);
        if (writeError != 0) return writeError;
        values[address] = loadLe32(static_cast<const std::uint8_t*>(buffer));
        return 0;
    }

    std::map<std::uint32_t, std::uint32_t> values;
    std::vector<std::pair<std::uint32_t, std::uint16_t>> reads;
    std::size_t readsThatWork = 1000;
    std::uint32_t writeError = 0;
};

struct RegisterPages : testing::Test {
    RegisterPages() {
        for (std::uint32_t page = 0; page < 28; ++page) {
            registers.values[4 + 4 * page] = 0x77000000 | base(page);
            registers.values[base(page)] = page == 5 ? 0 : 0x40;
        }
    }
    static std::uint32_t base(std::uint32_t page) { return 0x100 * (page + 2); }

    FakeRegisters registers;
    CRegisterPageMap pages{registers};
    std::uint32_t value = 0;
};

TEST_F(RegisterPages, LoadReadsTheTableThenTheSizeOfEachPage) {
    ASSERT_TRUE(pages.load().ok());
    ASSERT_EQ(registers.reads.size(), 29u);
    EXPECT_EQ(registers.reads[0], std::pair(4u, std::uint16_t{112}));
    for (std::uint32_t page = 0; page < 28; ++page) {
        EXPECT_EQ(registers.reads[page + 1], std::pair(base(page), std::uint16_t{4}));
    }
}

TEST_F(RegisterPages, TheFirstFailingReadEndsTheLoad) {
    for (std::size_t works = 0; works < 29; ++works) {
        registers.reads.clear();
        registers.readsThatWork = works;
        EXPECT_EQ(pages.load().code(), 0xE0000005u);
        EXPECT_EQ(registers.reads.size(), works + 1);
    }
}

TEST_F(RegisterPages, RegistersAreAtBasePlusOffset) {
    ASSERT_TRUE(pages.load().ok());
    registers.values[base(21) + 0x3C] = 0x12345678;
    ASSERT_TRUE(pages.read(21, 0x3C, value).ok());
    EXPECT_EQ(value, 0x12345678u);
    ASSERT_TRUE(pages.write(2, 8, 0x9ABCDEF0).ok());
    EXPECT_EQ(registers.values[base(2) + 8], 0x9ABCDEF0u);
    ASSERT_TRUE(pages.pageBase(27, value).ok());
    EXPECT_EQ(value, base(27)) << "without the high byte of the descriptor";
}

TEST_F(RegisterPages, APageThatIsNotThereIsABadArgument) {
    ASSERT_TRUE(pages.load().ok());
    const std::size_t before = registers.reads.size();
    for (const std::uint32_t page : {28u, 29u, 0xFFFFFFFFu}) {
        EXPECT_EQ(pages.read(page, 0, value).code(), 87u);
        EXPECT_EQ(pages.write(page, 0, 1).code(), 87u);
        EXPECT_EQ(pages.pageBase(page, value).code(), 87u);
    }
    EXPECT_EQ(registers.reads.size(), before);
}

TEST_F(RegisterPages, OffsetsEndWithThePageButOffset0NeverDoes) {
    ASSERT_TRUE(pages.load().ok());
    EXPECT_TRUE(pages.read(1, 0x3F, value).ok());
    EXPECT_EQ(pages.read(1, 0x40, value).code(), 87u);
    EXPECT_EQ(pages.write(1, 0xFFFFFFFF, 0).code(), 87u);
    EXPECT_TRUE(pages.read(5, 0, value).ok()) << "empty page";
    EXPECT_TRUE(pages.write(5, 0, 0).ok());
    EXPECT_EQ(pages.read(5, 4, value).code(), 87u);
}

TEST_F(RegisterPages, FailuresOfTheRegistersPassThrough) {
    ASSERT_TRUE(pages.load().ok());
    registers.readsThatWork = 0;
    registers.writeError = 0xE0000021;
    value = 7;
    EXPECT_EQ(pages.read(1, 4, value).code(), 0xE0000005u);
    EXPECT_EQ(value, 7u);
    EXPECT_EQ(pages.write(1, 4, 0).code(), 0xE0000021u);
}

}  // namespace
}  // namespace tavra
