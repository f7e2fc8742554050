// What GDI shows of the image in the preview window.
#include <algorithm>

#include "display_api/windows/preview_of_user.h"

namespace tavra::test {
namespace {

TEST_F(PreviewOfUser, ImageIsCopiedToTheMiddleOnBlack) {
    openMono();
    create(10, 9);
    show(1);
    EXPECT_TRUE(looksLike(10, 9, picture(10, 9, 2, 2, 6, 4)));
}

TEST_F(PreviewOfUser, ImageIsStretchedAndPlaced) {
    openMono();
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_FREE));
    create(20, 15);
    show(1);
    const int places[][2] = {{0, 0}, {3, 2}, {14, 11}, {-4, -2}, {-12, 3}};
    for (const auto& corner : places) {
        ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, static_cast<std::uint32_t>(corner[0]),
                                             static_cast<std::uint32_t>(corner[1]), 12, 8));
        EXPECT_TRUE(looksLike(20, 15, picture(20, 15, corner[0], corner[1], 6, 4, 2)))
            << corner[0] << ' ' << corner[1];
    }
}

TEST_F(PreviewOfUser, ImageOfItsOwnSizeIsCopiedInTheSmoothModeToo) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    create(10, 9);
    show(1);
    EXPECT_TRUE(looksLike(10, 9, picture(10, 9, 2, 2, 6, 4)));
}

// How exactly is the system's matter: each pixel lies between the image's around it, and there are shades
// that the image has not.
TEST_F(PreviewOfUser, SmoothModeMixesNeighbours) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    create(48, 32);
    show(1);
    const auto isBetween = [this](std::uint32_t seen, int x, int y) {
        const std::uint32_t least = grey(1, std::max(x - 1, 0), std::max(y - 1, 0));
        const std::uint32_t most =
            grey(1, std::min(x + 1, 5), std::min(y + 1, 3));  // they grow to both sides
        return seen == (seen & 0xFF) * 0x010101 && seen >= least && seen <= most;
    };
    EXPECT_TRUE(looks(48, 32, [&](const Pixels& seen) {
        bool mixed = false;
        for (int i = 0; i < 48 * 32; ++i) {
            const std::uint32_t pixel = seen[static_cast<std::size_t>(i)];
            if (!isBetween(pixel, i % 48 / 8, i / 48 / 8)) return false;
            mixed = mixed || (pixel & 0xFF) % 3 != 1;  // the image's own are 1, 4, 7 and so on
        }
        return mixed;
    }));
}

TEST_F(PreviewOfUser, IsBlackWithoutAnImage) {
    openMono();
    create(20, 10);
    EXPECT_TRUE(looksLike(20, 10, Pixels(200, 0)));
    const HDC dc = GetDC(window);
    EXPECT_EQ(SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0), 1);
    ReleaseDC(window, dc);
}

}  // namespace
}  // namespace tavra::test
