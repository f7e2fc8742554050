#include "values.h"

#include <gtest/gtest.h>

#include "exit_code.h"

namespace tavra::tool {
namespace {

TEST(Values, NamesAndNumbersGiveCodes) {
    EXPECT_EQ(codeOf(kTransferBits, "mosaic12p", "x"), 0x20000u);
    EXPECT_EQ(codeOf(kTransferBits, "0x20000", "x"), 0x20000u);
    EXPECT_EQ(codeOf(kTransferBits, "32", "x"), 32u);
    EXPECT_EQ(nameOf(kTransferBits, 0x20000), "mosaic12p");
    EXPECT_EQ(nameOf(kTransferBits, 3), "3");
}

TEST(Values, AnUnknownNameListsTheKnownOnes) {
    try {
        codeOf(kPixelFormats, "rgb", "pixel-format");
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
        EXPECT_STREQ(failure.what(), "pixel-format cannot be 'rgb': one of mono8, bgr24, bgr32");
    }
}

TEST(Values, MaskNamesItsBits) {
    EXPECT_EQ(namesIn(kPixelFormats, 13), "mono8, bgr24, bgr32");
    EXPECT_EQ(namesIn(kPixelFormats, 0), "none");
}

TEST(Values, NumbersAreWholeAndFit) {
    EXPECT_EQ(parseNumber("4294967295", "n"), 0xFFFFFFFFu);
    for (const char* bad : {"", "4294967296", "-1", "1.5", "12abc", "0x", " 1"}) {
        EXPECT_THROW(parseNumber(bad, "n"), Failure) << bad;
    }
}

TEST(Values, GeometryIsSizeWithOrWithoutPlace) {
    const Geometry size = parseGeometry("640x480");
    EXPECT_EQ(geometryText(size), "640x480+0+0");
    EXPECT_EQ(geometryText(parseGeometry("640x480+16+8")), "640x480+16+8");
    for (const char* bad : {"", "640", "640x", "640x480+1", "640x480+1+", "640x480+1+2z", "x480", "-1x3"}) {
        EXPECT_THROW(parseGeometry(bad), Failure) << bad;
    }
}

}  // namespace
}  // namespace tavra::tool
