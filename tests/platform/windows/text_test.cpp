#include "platform/text.h"

#include <gtest/gtest.h>

namespace tavra::platform {
namespace {

// Whatever the code page: a unit that it has comes back as it was, any other is a question mark and never a
// look-alike.
TEST(Text, AUnitComesBackOrIsAQuestionMark) {
    int kept = 0;
    for (unsigned code = 1; code < 0x10000; ++code) {
        const std::u16string unit(1, static_cast<char16_t>(code));
        const std::string narrow = toNarrow(unit);
        if (narrow == "?") continue;
        ASSERT_EQ(toWide(narrow), unit) << std::hex << code;
        ++kept;
    }
    EXPECT_GE(kept, 126) << "ASCII is in every code page";
}

// Valid and invalid bytes in one text: what is valid must not suffer.
TEST(Text, BytesWithoutCounterpartBecomeQuestionMarksAndTheRestIsKept) {
    for (unsigned byte = 0x80; byte < 0x100; ++byte) {
        const std::string narrow = {'a', static_cast<char>(byte), '.', '.', '.', '.', 'b'};
        const std::u16string wide = toWide(narrow);
        ASSERT_GE(wide.size(), 4u) << byte;
        EXPECT_EQ(wide.front(), u'a') << byte;
        EXPECT_EQ(wide.back(), u'b') << byte;
    }
}

}  // namespace
}  // namespace tavra::platform
