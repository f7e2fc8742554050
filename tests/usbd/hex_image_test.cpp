#include "hex_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace tavra::usbd {
namespace {

// A record with its checksum, written independently of the reader.
std::string record(std::uint8_t type, std::uint16_t address, const std::vector<std::uint8_t>& data) {
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(data.size()),
                                    static_cast<std::uint8_t>(address >> 8),
                                    static_cast<std::uint8_t>(address), type};
    bytes.insert(bytes.end(), data.begin(), data.end());
    unsigned sum = 0;
    for (const unsigned byte : bytes) sum += byte;
    bytes.push_back(static_cast<std::uint8_t>(0x100 - (sum & 0xFF)));
    std::string text = ":";
    for (const std::uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        text += digits;
    }
    return text + "\r\n";
}

const std::string kEnd = ":00000001FF\r\n";

struct Parsed {
    ErrorCode result = 0;
    std::uint32_t length = 0;
    std::vector<std::uint8_t> image, mask;
};

Parsed parse(const std::string& text, std::size_t capacity = 64) {
    Parsed parsed;
    parsed.image.assign(capacity, 0xCC);
    parsed.mask.assign(capacity, 0xCC);
    parsed.result = parseHexImage(text, parsed.image, parsed.mask, parsed.length);
    return parsed;
}

TEST(HexImage, AKnownRecord) {
    // Worked by hand: 03 + 00 + 30 + 00 + 02 + 33 + 7A = E2, and 100 - E2 = 1E.
    const Parsed parsed = parse(":0300300002337A1E\n:00000001FF");
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.length, 0x33u);
    EXPECT_EQ(parsed.image[0x30], 0x02);
    EXPECT_EQ(parsed.image[0x31], 0x33);
    EXPECT_EQ(parsed.image[0x32], 0x7A);
    EXPECT_EQ(parsed.mask[0x32], 1);
}

TEST(HexImage, GapsAreZeroAndUnmasked) {
    const Parsed parsed = parse(record(0, 4, {1, 2}) + record(0, 10, {3}) + kEnd);
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.length, 11u);
    const std::vector<std::uint8_t> image{0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 3, 0},
        mask{0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0};
    EXPECT_TRUE(std::equal(image.begin(), image.end(), parsed.image.begin()));
    EXPECT_TRUE(std::equal(mask.begin(), mask.end(), parsed.mask.begin()));
    EXPECT_EQ(parsed.image.back(), 0) << "behind the last byte as well";
}

TEST(HexImage, RecordsMayComeInAnyOrderAndInEitherCase) {
    std::string text = record(0, 8, {0xAB}) + record(0, 0, {0xCD});
    for (char& c : text) c = static_cast<char>(std::tolower(c));
    const Parsed parsed = parse("  \r\n\t" + text + "\n" + kEnd + " \n" + std::string(3, '\0'));
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.image[0], 0xCD);
    EXPECT_EQ(parsed.image[8], 0xAB);
}

TEST(HexImage, SegmentBaseIsSixteenTimesItsWordAndWraps) {
    const Parsed parsed = parse(record(2, 0, {0x00, 0x01}) + record(0, 0xFFFF, {7, 8}) + kEnd, 0x10010);
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.image[0x10 + 0xFFFF], 7);
    EXPECT_EQ(parsed.image[0x10], 8) << "the offset wraps inside the segment";
}

TEST(HexImage, LinearBaseIsTheHighHalf) {
    const Parsed parsed = parse(record(4, 0, {0x00, 0x01}) + record(0, 2, {9}) + kEnd, 0x10010);
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.image[0x10002], 9);
    EXPECT_EQ(parsed.length, 0x10003u);
}

TEST(HexImage, ALinearBaseEndsASegment) {
    const std::string text =
        record(2, 0, {0x00, 0x02}) + record(0, 0, {1}) + record(4, 0, {0, 0}) + record(0, 0, {2}) + kEnd;
    const Parsed parsed = parse(text);
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.image[0x20], 1);
    EXPECT_EQ(parsed.image[0], 2);
}

TEST(HexImage, StartAddressesPlaceNothing) {
    const Parsed parsed = parse(record(3, 0, {0, 0, 1, 0}) + record(5, 0, {0, 0, 1, 0}) + kEnd);
    EXPECT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.length, 0u);
}

TEST(HexImage, AnEmptyImageIsOneWithAnEndRecordOnly) {
    EXPECT_EQ(parse(kEnd).result, 0u);
    EXPECT_EQ(parse(record(0, 3, {}) + kEnd).length, 0u);
}

TEST(HexImage, RefusesWhatIsNotIntelHex) {
    const std::string good = record(0, 0, {1, 2, 3});
    EXPECT_EQ(parse("").result, 13u) << "nothing";
    EXPECT_EQ(parse(good).result, 13u) << "no end record";
    EXPECT_EQ(parse("x" + good + kEnd).result, 13u) << "junk in front";
    EXPECT_EQ(parse(good + "junk" + kEnd).result, 13u) << "junk between";
    EXPECT_EQ(parse(good + kEnd + good).result, 13u) << "records behind the end";
    EXPECT_EQ(parse(good + std::string(1, '\0') + kEnd).result, 13u) << "a NUL between records";
    EXPECT_EQ(parse(":0100000000FE\n" + kEnd).result, 13u) << "wrong checksum (right is FF)";
    EXPECT_EQ(parse(":01000000zzFF\n" + kEnd).result, 13u) << "no hex digits";
    EXPECT_EQ(parse(":05000000010203\n" + kEnd).result, 13u) << "shorter than its count";
    EXPECT_EQ(parse(":0").result, 13u) << "half a byte";
    EXPECT_EQ(parse(record(6, 0, {}) + kEnd).result, 13u) << "unknown type";
    EXPECT_EQ(parse(record(2, 0, {1}) + kEnd).result, 13u) << "segment base of one byte";
    EXPECT_EQ(parse(record(4, 0, {0, 0, 0}) + kEnd).result, 13u) << "linear base of three bytes";
    EXPECT_EQ(parse(record(3, 0, {0, 0}) + kEnd).result, 13u) << "start address of two bytes";
    EXPECT_EQ(parse(record(1, 0, {0})).result, 13u) << "an end record with data";
}

TEST(HexImage, RefusesAnAddressGivenTwice) {
    EXPECT_EQ(parse(record(0, 0, {1, 2}) + record(0, 1, {2}) + kEnd).result, 13u);
}

TEST(HexImage, RefusesABytePastTheImage) {
    EXPECT_EQ(parse(record(0, 63, {1}) + kEnd).result, 0u);
    EXPECT_EQ(parse(record(0, 63, {1, 2}) + kEnd).result, 122u);
    EXPECT_EQ(parse(record(4, 0, {0xFF, 0xFF}) + record(0, 0, {1}) + kEnd).result, 122u);
}

TEST(HexImage, TheLongestRecordHas255Bytes) {
    std::vector<std::uint8_t> data(255);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i);
    const Parsed parsed = parse(record(0, 1, data) + kEnd, 256);
    ASSERT_EQ(parsed.result, 0u);
    EXPECT_EQ(parsed.length, 256u);
    EXPECT_EQ(parsed.mask[0], 0);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), parsed.image.begin() + 1));
}

TEST(HexImage, ATextCutAnywhereIsNone) {
    const std::string text = record(4, 0, {0, 0}) + record(0, 0, {1, 2, 3}) + record(5, 0, {0, 0, 0, 1}) +
                             kEnd.substr(0, kEnd.size() - 2);
    ASSERT_EQ(parse(text).result, 0u);
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_EQ(parse(text.substr(0, size)).result, 13u) << size;
    }
}

TEST(HexImage, ADigitThatChangedShows) {
    const std::string text = record(0, 0x12, {0x10, 0x0F, 0xA5}) + kEnd;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (std::isxdigit(static_cast<unsigned char>(text[at])) == 0) continue;
        for (const char digit : {'0', '1', '7', 'F'}) {
            if (digit == text[at]) continue;
            std::string changed = text;
            changed[at] = digit;
            EXPECT_EQ(parse(changed).result, 13u) << at << " to " << digit;
        }
    }
}

// What firmware/make_image.cmake promises, and nothing else.
TEST(ShippedFirmware, HoldsItsNameAPatternAndItsType) {
    for (const unsigned type : {773u, 1541u, 1797u, 2053u}) {
        const auto bytes =
            test::readFile(std::string(TAVRA_SHIPPED_FIRMWARE) + "/" + std::to_string(type) + ".hex");
        const Parsed parsed = parse(std::string(bytes.begin(), bytes.end()), 16384);
        ASSERT_EQ(parsed.result, 0u) << type;
        EXPECT_EQ(parsed.length, 16384u);
        std::vector<std::uint8_t> image(16384), mask(16384);
        const std::string name = "Firmware of the virtual camera, type " + std::to_string(type);
        std::copy(name.begin(), name.end(), image.begin());
        std::fill_n(mask.begin(), name.size() + 1, std::uint8_t{1});
        for (unsigned address = 0x100; address < 0x300; ++address) {
            image[address] = static_cast<std::uint8_t>(address + type);
            mask[address] = 1;
        }
        image[0x3FFE] = static_cast<std::uint8_t>(type);
        image[0x3FFF] = static_cast<std::uint8_t>(type / 256);
        mask[0x3FFE] = mask[0x3FFF] = 1;
        EXPECT_EQ(parsed.image, image) << type;
        EXPECT_EQ(parsed.mask, mask) << type;
    }
}

}  // namespace
}  // namespace tavra::usbd
