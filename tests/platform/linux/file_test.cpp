#include "platform/file.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::TempFolder;
using test::wideName;

// Half of a pair: no encoding has bytes for it.
constexpr char16_t kLoneSurrogates[] = {0xD800, 0xDBFF, 0xDC00, 0xDFFF};

TEST(LinuxOutputFile, ANameThatCannotBeExpressedIsNotOpenedUnderAnother) {
    const TempFolder folder;
    for (const char16_t lone : kLoneSurrogates) {
        for (const std::u16string& name :
             {u"/a" + std::u16string(1, lone) + u"b", u"/a" + std::u16string(1, lone)}) {
            const OutputFile file =
                OutputFile::open(wideName(folder.path()) + name, OutputFile::Buffering::None);
            EXPECT_FALSE(file.isOpen()) << std::hex << +lone;
        }
    }
    EXPECT_TRUE(folder.isEmpty());
}

TEST(LinuxText, ExactlyOrNotAtAll) {
    EXPECT_EQ(toNarrowExactly(u"Camera 7?"), "Camera 7?");
    EXPECT_EQ(toNarrowExactly(u""), "");
    const std::u16string longText(100'000, u'x');
    EXPECT_EQ(toNarrowExactly(longText), std::string(100'000, 'x'));
    for (const char16_t lone : kLoneSurrogates) {
        EXPECT_EQ(toNarrowExactly(std::u16string(1, lone)), std::nullopt);
        EXPECT_EQ(toNarrowExactly(longText + lone + longText), std::nullopt);
    }
}

}  // namespace
}  // namespace tavra::platform
