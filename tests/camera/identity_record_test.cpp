#include "camera/identity_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tavra {
namespace {

std::uint8_t lengthOf(const IdentityRecord& record) {
    return record.bytes()[5];
}
std::uint8_t flagOf(const IdentityRecord& record) {
    return record.bytes()[4];
}

std::string narrowText(const IdentityRecord& record, std::size_t size) {
    std::string buffer(size, '\0');
    record.copyText(std::span<char>(buffer));
    return buffer;
}

// A zeroed buffer of `bytes` bytes, filled.
std::u16string wideText(const IdentityRecord& record, std::uint32_t bytes) {
    std::u16string buffer((bytes + 1) / 2, u'\0');
    record.copyText({buffer.data(), bytes / 2}, bytes);
    return buffer;
}

TEST(IdentityRecord, NarrowTextGoesInWithItsTerminator) {
    const IdentityRecord record = IdentityRecord::withNarrow(0x11223344, "cam", 100);
    EXPECT_EQ(record.id(), 0x11223344u);
    const std::uint8_t head[] = {0x44, 0x33, 0x22, 0x11, 0, 4, 'c', 'a', 'm', 0};
    EXPECT_EQ(std::memcmp(record.bytes().data(), head, sizeof head), 0);
}

TEST(IdentityRecord, NarrowTextEndsWithTheBufferOrTheCut) {
    const std::string text(300, 'x');
    EXPECT_EQ(lengthOf(IdentityRecord::withNarrow(1, text.c_str(), 2)), 2);
    EXPECT_EQ(lengthOf(IdentityRecord::withNarrow(1, text.c_str(), 250)), 250);
    EXPECT_EQ(lengthOf(IdentityRecord::withNarrow(1, text.c_str(), 251)), 249);
    const IdentityRecord cut = IdentityRecord::withNarrow(1, text.c_str(), 301);
    EXPECT_EQ(lengthOf(cut), 249);
    EXPECT_EQ(cut.bytes()[6 + 248], 'x');
    EXPECT_EQ(cut.bytes()[6 + 249], 0);
}

TEST(IdentityRecord, WideTextGoesInByPairs) {
    const IdentityRecord record = IdentityRecord::withWide(7, u"ab", 100);
    EXPECT_EQ(flagOf(record), 128);
    EXPECT_EQ(lengthOf(record), 6);
    const std::uint8_t text[] = {'a', 0, 'b', 0, 0, 0};
    EXPECT_EQ(std::memcmp(&record.bytes()[6], text, sizeof text), 0);
}

TEST(IdentityRecord, WideTextEndsBehindAPairWhoseFirstByteIsZero) {
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, u"a\u0100b", 100)), 4);
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, u"abcd", 4)), 4);
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, u"abcd", 5)), 5);
    const std::u16string text(200, u'x');
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, text.c_str(), 250)), 250);
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, text.c_str(), 400)), 248);
}

TEST(IdentityRecord, NoTextIsALengthOf0) {
    EXPECT_EQ(lengthOf(IdentityRecord::withNarrow(7, nullptr, 10)), 0);
    EXPECT_EQ(lengthOf(IdentityRecord::withNarrow(7, "abc", 0)), 0);
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, nullptr, 10)), 0);
    EXPECT_EQ(lengthOf(IdentityRecord::withWide(7, u"abc", 0)), 0);
    EXPECT_EQ(IdentityRecord::withWide(7, nullptr, 10).id(), 7u);
}

TEST(IdentityRecord, NarrowToNarrowIsCopiedWithinTheBuffer) {
    const IdentityRecord record = IdentityRecord::withNarrow(7, "camera", 6);  // stored without a terminator
    EXPECT_EQ(narrowText(record, 8), std::string("camera\0\0", 8));
    EXPECT_EQ(narrowText(record, 6), "camera") << "as long as the buffer: no terminator";
    EXPECT_EQ(narrowText(record, 5), std::string("came\0", 5));
    EXPECT_EQ(narrowText(record, 1), std::string("\0", 1));
    EXPECT_EQ(narrowText(record, 0), "");
}

TEST(IdentityRecord, WideToWideIsCopiedWithinTheBuffer) {
    const IdentityRecord record = IdentityRecord::withWide(7, u"camera", 12);
    EXPECT_EQ(wideText(record, 16), std::u16string(u"camera\0\0", 8));
    EXPECT_EQ(wideText(record, 12), u"camera");
    EXPECT_EQ(wideText(record, 10), std::u16string(u"came\0", 5));
    EXPECT_EQ(wideText(record, 2), std::u16string(1, u'\0'));
    EXPECT_EQ(wideText(record, 1), std::u16string(1, u'\0'));
    EXPECT_EQ(wideText(record, 0), u"");
}

TEST(IdentityRecord, WideToNarrowIsConvertedToTheNul) {
    const IdentityRecord record = IdentityRecord::withWide(7, u"camera", 100);
    EXPECT_EQ(narrowText(record, 8), std::string("camera\0\0", 8));
    EXPECT_EQ(narrowText(record, 4), std::string("cam\0", 4));
    EXPECT_EQ(narrowText(record, 0), "");
}

TEST(IdentityRecord, NarrowToWideIsConvertedIntoOneLessThanTheBuffer) {
    const IdentityRecord record = IdentityRecord::withNarrow(7, "camera", 100);
    EXPECT_EQ(wideText(record, 16), std::u16string(u"camera\0\0", 8));
    EXPECT_EQ(wideText(record, 12), std::u16string(u"camer\0", 6));
    EXPECT_EQ(wideText(record, 3), std::u16string(2, u'\0'));
    EXPECT_EQ(wideText(record, 0), u"");
}

TEST(IdentityRecord, NarrowToWideEndsWithTheStoredLength) {
    IdentityRecord record = IdentityRecord::withNarrow(7, "camera", 6);
    record.bytes()[6 + 6] = 'x';  // what an older, longer text left behind
    EXPECT_EQ(wideText(record, 18), std::u16string(u"camera\0\0\0", 9));
}

TEST(IdentityRecord, TextOf251BytesOrMoreIsNoText) {
    IdentityRecord record;
    record.bytes().fill('y');
    record.bytes()[4] = 0;
    record.bytes()[5] = 250;
    EXPECT_EQ(narrowText(record, 300).find('\0'), 250u);
    record.bytes()[5] = 251;
    EXPECT_EQ(narrowText(record, 300).find('\0'), 0u);
    record.bytes()[4] = 128;
    EXPECT_EQ(wideText(record, 300)[0], u'\0');
}

TEST(IdentityRecord, TextWithoutATerminatorEndsWithTheRecord) {
    IdentityRecord record;
    for (std::size_t i = 6; i < 256; ++i) record.bytes()[i] = i % 2 == 0 ? 'z' : 0;
    record.bytes()[4] = 128;
    record.bytes()[5] = 4;
    const std::string text = narrowText(record, 300);
    EXPECT_EQ(text.find('\0'), 125u);
}

}  // namespace
}  // namespace tavra
