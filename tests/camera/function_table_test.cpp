#include "camera/function_table.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

CameraInfo ofType(std::uint16_t type, std::uint16_t hardware = 1) {
    CameraInfo info;
    info.productType = type;
    info.hardwareRevision = hardware;
    return info;
}

CapabilityWords withBit(unsigned word, unsigned bit) {
    CapabilityWords words;
    words.words[word] = static_cast<std::uint16_t>(1u << bit);
    return words;
}

CapabilityWords allBits() {
    CapabilityWords words;
    words.words.fill(0xFFFF);
    return words;
}

bool has(const CapabilityWords& words, std::uint32_t number, std::uint16_t type = 8214) {
    return hasFunction(ofType(type), words, 5, number);
}

TEST(FunctionTable, NumbersBelow65536CountWordsOf16Bits) {
    for (std::uint32_t number = 3; number < 320; ++number) {
        if (number == 6 || (number >= 256 && number <= 261)) continue;
        EXPECT_TRUE(has(withBit(number / 16, number % 16), number)) << number;
        CapabilityWords others = allBits();
        others.words[number / 16] = static_cast<std::uint16_t>(~(1u << number % 16));
        EXPECT_FALSE(has(others, number)) << number;
    }
}

TEST(FunctionTable, ThereIsNothingBehindTheLastWord) {
    EXPECT_TRUE(has(allBits(), 319));
    EXPECT_FALSE(has(allBits(), 320));
    EXPECT_FALSE(has(allBits(), 0xFFFF));
    EXPECT_FALSE(has(allBits(), 0xB0000));
    EXPECT_FALSE(has(allBits(), 0xFFFF0000));
    EXPECT_FALSE(has(allBits(), 0xFFFFFFFF));
}

TEST(FunctionTable, LargeNumbersSelectAPairAndABit) {
    for (std::uint32_t pair = 1; pair <= 10; ++pair) {
        for (std::uint32_t bit = 0; bit < 32; ++bit) {
            const std::uint32_t number = pair << 16 | bit;
            const unsigned word = bit < 16 ? 2 * pair - 2 : 2 * pair - 1;
            EXPECT_TRUE(has(withBit(word, bit % 16), number)) << std::hex << number;
        }
    }
    EXPECT_TRUE(has(withBit(16, 7), 0x90007));
    EXPECT_TRUE(has(withBit(16, 14), 0x9000E));
    EXPECT_TRUE(has(withBit(19, 11), 0xA001B));
    EXPECT_FALSE(has(allBits(), 0x10020)) << "a pair has 32 bits";
}

TEST(FunctionTable, LegacyTypesHaveNothing) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        for (const std::uint32_t number :
             {0u, 1u, 2u, 6u, 64u, 256u, 257u, 258u, 259u, 260u, 261u, 0x90007u}) {
            EXPECT_FALSE(hasFunction(ofType(type, 15), allBits(), 1, number)) << type << ' ' << number;
        }
    }
}

TEST(FunctionTable, FourNumbersAreAlwaysThere) {
    for (const std::uint32_t number : {256u, 258u, 260u, 261u}) EXPECT_TRUE(has(CapabilityWords(), number));
}

TEST(FunctionTable, DigitalGainIsTheOppositeOfItsAbsence) {
    EXPECT_TRUE(has(CapabilityWords(), 257));
    EXPECT_FALSE(has(withBit(18, 8), 257));
    EXPECT_TRUE(has(withBit(18, 8), 0xA0008));
}

TEST(FunctionTable, Number259IsForMonoAndForOneType) {
    EXPECT_TRUE(hasFunction(ofType(8214), {}, 1, 259));
    EXPECT_FALSE(hasFunction(ofType(8214), allBits(), 12, 259));
    EXPECT_TRUE(hasFunction(ofType(529), {}, 5, 259));
}

TEST(FunctionTable, Number0IsForFourTypes) {
    for (const std::uint16_t type : {272, 528, 2310, 4102}) {
        EXPECT_TRUE(has(withBit(0, 0), 0, type));
        EXPECT_FALSE(has(CapabilityWords(), 0, type));
    }
    EXPECT_FALSE(has(allBits(), 0));
}

TEST(FunctionTable, Number1IsThereOnFirstBoardsOfEarlyTypes) {
    for (const std::uint16_t type : {2310, 4102, 4358, 4614, 5382, 5638}) {
        EXPECT_TRUE(hasFunction(ofType(type, 15), {}, 5, 1));
        EXPECT_FALSE(hasFunction(ofType(type, 16), {}, 5, 1));
        EXPECT_TRUE(hasFunction(ofType(type, 16), withBit(0, 1), 5, 1));
    }
    EXPECT_FALSE(hasFunction(ofType(272, 15), {}, 5, 1));
}

TEST(FunctionTable, Numbers2And6AreThereOnTheSecondBoardOfOneType) {
    for (const std::uint32_t number : {2u, 6u}) {
        EXPECT_TRUE(hasFunction(ofType(2310, 16), {}, 5, number));
        EXPECT_FALSE(hasFunction(ofType(2310, 15), {}, 5, number));
        EXPECT_FALSE(hasFunction(ofType(4102, 16), {}, 5, number));
        EXPECT_TRUE(hasFunction(ofType(4102, 16), withBit(0, number), 5, number));
    }
}

}  // namespace
}  // namespace tavra
