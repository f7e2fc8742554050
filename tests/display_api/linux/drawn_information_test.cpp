// The information overlay as it is seen in a window, whatever draws it.
#include <algorithm>
#include <string>

#include "display_x11/preview_on_screen.h"

namespace tavra::test {
namespace {

constexpr Size kSize{400, 100};
constexpr std::uint32_t kGrey = 0x5A5A5A, kBlack = 0, kWhite = 0xFFFFFF;

// Modes that show each grey as it is.
class DrawnInformation : public PreviewOnScreen, public testing::WithParamInterface<int> {
  protected:
    // A window that is as large as the image, of one grey.
    void showOneGrey(std::uint32_t information) {
        openMono(kSize.width, kSize.height);
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, static_cast<std::uint8_t>(GetParam())));
        ASSERT_TRUE(Tavra_SetDisplayInfoMode(handle, information));
        createWindow(kSize);
        start();
        sendFrame(1, Bytes(rawSize, 0x5A));
        EXPECT_EQ(expectMessage(45067), 1u);
    }
    // What was published, as the screen has it.
    Picture published() {
        const platform::Bitmap& bitmap = record().imagesA.image(record().imagesA.takeReady()).bitmap;
        Picture picture;
        for (std::size_t i = 0; i < std::size_t{kSize.width} * kSize.height; ++i) {
            picture.push_back(bitmap.pixels()[i] * 0x010101u);
        }
        return picture;
    }
    static std::size_t countOf(const Picture& picture, std::uint32_t color) {
        return static_cast<std::size_t>(std::count(picture.begin(), picture.end(), color));
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, DrawnInformation, testing::Values(0, 3, 4, 5),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

// Four lines, black on white boxes, from the left upper corner on.
TEST_P(DrawnInformation, StatisticsAreOnTheScreen) {
    showOneGrey(TAVRA_DISPLAY_INFO_STATISTICS);
    const Picture picture = published();
    EXPECT_EQ(picture.front(), kWhite);
    EXPECT_EQ(picture.back(), kGrey);
    EXPECT_GT(countOf(picture, kBlack), 400u);
    EXPECT_EQ(countOf(picture, kBlack) + countOf(picture, kWhite) + countOf(picture, kGrey), picture.size());
    EXPECT_TRUE(server.looksLike(window, kSize, picture));
    stopAndExpectCode(0);
}

// Lines at the boundaries of the cells, through the whole image.
TEST_P(DrawnInformation, GridIsOnTheScreen) {
    showOneGrey(TAVRA_DISPLAY_INFO_GRID);
    std::uint16_t x[3], y[3];
    ASSERT_TRUE(Tavra_GetControlArea(handle, x, y));
    const Picture picture = published();
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t row = 0; row < kSize.height; ++row) {
            ASSERT_EQ(picture[row * kSize.width + x[i] * kSize.width / 10000], kBlack) << i << ' ' << row;
        }
        for (std::size_t column = 0; column < kSize.width; ++column) {
            ASSERT_EQ(picture[y[i] * kSize.height / 10000 * kSize.width + column], kBlack)
                << i << ' ' << column;
        }
    }
    EXPECT_TRUE(server.looksLike(window, kSize, picture));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
