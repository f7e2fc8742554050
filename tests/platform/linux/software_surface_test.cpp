// Surfaces in memory: copying between formats, what is refused, and drawing on them.
#include "platform/linux/software_surface.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "support/drawing.h"

namespace tavra::test {
namespace {

using platform::ISurface;
using platform::kSoftware32;
using platform::kSoftware565;
using platform::kSoftwareUyvy;
using platform::Size;
using platform::SoftwareSurface;
using platform::SurfaceFormat;
using platform::SurfaceKind;
using Area = platform::Rectangle;

class NoClipper final : public platform::IClipper {};

std::shared_ptr<SoftwareSurface> make(const Size& size, const SurfaceFormat& format = kSoftware32) {
    std::shared_ptr<ISurface> surface;
    EXPECT_TRUE(SoftwareSurface::make({SurfaceKind::Offscreen, size, format}, surface).ok());
    return std::static_pointer_cast<SoftwareSurface>(surface);
}

// Words of a surface, as wide as its pixels.
template <typename Word>
void write(ISurface& surface, const std::vector<std::vector<Word>>& rows) {
    platform::LockedSurface locked;
    ASSERT_TRUE(surface.lockForWriting(locked).ok());
    for (std::size_t y = 0; y < rows.size(); ++y) {
        std::memcpy(locked.pixels + y * locked.pitch, rows[y].data(), rows[y].size() * sizeof(Word));
    }
    EXPECT_TRUE(surface.unlock().ok());
}

std::vector<std::uint32_t> colors(const SoftwareSurface& surface, std::int64_t y) {
    std::vector<std::uint32_t> row;
    for (std::uint32_t x = 0; x < surface.size().width; ++x) row.push_back(surface.colorAt(x, y));
    return row;
}

using Row = std::vector<std::uint32_t>;

TEST(SoftwareSurface, BeginsBlackAndHasASize) {
    EXPECT_EQ(colors(*make({3, 1}), 0), (Row{0, 0, 0}));
    std::shared_ptr<ISurface> none;
    EXPECT_EQ(SoftwareSurface::make({SurfaceKind::Offscreen, {0, 4}, kSoftware32}, none),
              Status(platform::kSurfaceInvalidRectangle));
    EXPECT_EQ(SoftwareSurface::make({SurfaceKind::Offscreen, {4, 0}, kSoftware32}, none),
              Status(platform::kSurfaceInvalidRectangle));
    EXPECT_EQ(none, nullptr);
}

TEST(SoftwareSurface, ScalingTakesThePixelUnderTheMiddle) {
    const auto from = make({3, 2}), to = make({5, 3});
    write<std::uint32_t>(*from, {{1, 2, 3}, {4, 5, 6}});
    ASSERT_TRUE(to->blit({0, 0, 5, 3}, *from, {0, 0, 3, 2}).ok());
    // The middles of five pixels lie at 0.3, 0.9, 1.5, 2.1 and 2.7 of three; of three at 0.3, 1 and 1.7 of
    // two.
    EXPECT_EQ(colors(*to, 0), (Row{1, 1, 2, 3, 3}));
    EXPECT_EQ(colors(*to, 1), (Row{4, 4, 5, 6, 6}));
    EXPECT_EQ(colors(*to, 2), (Row{4, 4, 5, 6, 6}));
    ASSERT_TRUE(to->blit({1, 0, 2, 1}, *from, {0, 0, 3, 2}).ok());
    EXPECT_EQ(colors(*to, 0), (Row{1, 5, 2, 3, 3}));
}

TEST(SoftwareSurface, SixteenBitsKeepTheHighOnes) {
    const auto wide = make({2, 1}), narrow = make({2, 1}, kSoftware565), back = make({2, 1});
    write<std::uint32_t>(*wide, {{0xFFFFFF, 0x8C4A21}});
    ASSERT_TRUE(narrow->blit({0, 0, 2, 1}, *wide, {0, 0, 2, 1}).ok());
    ASSERT_TRUE(back->blit({0, 0, 2, 1}, *narrow, {0, 0, 2, 1}).ok());
    // Red 0x8C is 17 of 31: 10001 and its high bits 100. Green 0x4A is 18 of 63, blue 0x21 is 4 of 31.
    EXPECT_EQ(colors(*back, 0), (Row{0xFFFFFF, 0x8C4921}));
}

TEST(SoftwareSurface, UyvyIsSeenInStudioRange) {
    const auto image = make({4, 1}, kSoftwareUyvy);
    write<std::uint8_t>(*image, {{128, 16, 128, 235, 90, 81, 240, 255}});
    const Row seen = colors(*image, 0);
    EXPECT_EQ(seen[0], 0u);
    EXPECT_EQ(seen[1], 0xFFFFFFu);
    // 1.1644 * 65 = 75.7; red + 1.596 * 112, green + 0.3918 * 38 - 0.813 * 112, blue - 2.0172 * 38.
    EXPECT_EQ(seen[2], 0xFE0000u);
    EXPECT_EQ(seen[3] >> 16, 255u);
}

TEST(SoftwareSurface, WhatLiesOutsideIsAnErrorUnlessItIsClipped) {
    const auto from = make({2, 2}), to = make({2, 2});
    write<std::uint32_t>(*from, {{1, 2}, {3, 4}});
    const Status outside(platform::kSurfaceInvalidRectangle);
    const Area whole{0, 0, 2, 2}, beyond{1, 1, 3, 3};
    EXPECT_EQ(to->blit(beyond, *from, whole), outside);
    EXPECT_EQ(to->blit(whole, *from, beyond), outside);
    EXPECT_EQ(to->blit({1, 1, 1, 2}, *from, whole), outside);
    EXPECT_EQ(to->blit({-1, 0, 1, 2}, *from, whole), outside);
    EXPECT_EQ(to->blitKeyed(1, 0, *from, whole), outside);
    EXPECT_EQ(to->fill(&beyond, 9), outside);
    EXPECT_EQ(colors(*to, 0), (Row{0, 0}));
    NoClipper clipper;
    ASSERT_TRUE(to->setClipper(clipper).ok());
    EXPECT_TRUE(to->blit(beyond, *from, whole).ok());
    EXPECT_EQ(colors(*to, 1), (Row{0, 1}));
    EXPECT_TRUE(to->blit({-1, 0, 1, 2}, *from, whole).ok());
    EXPECT_EQ(colors(*to, 0), (Row{2, 0}));
    const Area behind{0, 1, 9, 9};
    EXPECT_TRUE(to->fill(&behind, 9).ok());
    EXPECT_EQ(colors(*to, 1), (Row{9, 9}));
    EXPECT_EQ(to->blit(whole, *from, beyond), outside);
}

TEST(SoftwareSurface, KeyIsLeftOut) {
    for (const SurfaceFormat& format : {kSoftware32, kSoftware565}) {
        const auto from = make({3, 1}, format), to = make({3, 1}, format);
        ASSERT_TRUE(to->fill(nullptr, 0x1F).ok());
        const Area middle{1, 0, 2, 1};
        ASSERT_TRUE(from->fill(&middle, 0x10).ok());
        ASSERT_TRUE(from->setSourceKey(0x10).ok());
        ASSERT_TRUE(to->blitKeyed(0, 0, *from, {0, 0, 3, 1}).ok());
        const std::uint32_t blue = format == kSoftware32 ? 0x1F : 0xFF;
        EXPECT_EQ(colors(*to, 0), (Row{0, blue, 0}));
    }
    EXPECT_EQ(make({1, 1})->blitKeyed(0, 0, *make({1, 1}, kSoftware565), {0, 0, 1, 1}),
              Status(platform::kSurfaceInvalidFormat));
}

TEST(SoftwareSurface, IsBusyWhileItIsLockedOrDrawnOn) {
    const auto surface = make({2, 1}), other = make({2, 1});
    const Area whole{0, 0, 2, 1};
    platform::LockedSurface locked;
    TavraDC dc = nullptr;
    const Status busy(platform::kSurfaceBusy);
    ASSERT_TRUE(surface->lockForWriting(locked).ok());
    EXPECT_EQ(surface->fill(nullptr, 1), busy);
    EXPECT_EQ(other->blit(whole, *surface, whole), busy);
    EXPECT_EQ(surface->getDC(dc), busy);
    ASSERT_TRUE(surface->unlock().ok());
    ASSERT_TRUE(surface->getDC(dc).ok());
    EXPECT_EQ(surface->getDC(dc), Status(platform::kSurfaceContextOut));
    EXPECT_EQ(surface->lockForWriting(locked), busy);
    EXPECT_EQ(other->blitKeyed(0, 0, *surface, whole), busy);
    EXPECT_TRUE(surface->releaseDC(dc).ok());
    EXPECT_TRUE(other->blit(whole, *surface, whole).ok());
}

TEST(SoftwareSurface, ContextDrawsOnWhatIsThere) {
    for (const SurfaceFormat& format : {kSoftware32, kSoftware565}) {
        const auto surface = make({3, 2}, format);
        ASSERT_TRUE(surface->paintSolid(0xFF0000).ok());  // blue
        TavraDC dc = nullptr;
        ASSERT_TRUE(surface->getDC(dc).ok());
        EXPECT_TRUE(fillRectangle(dc, {1, 1, 1, 1}, {255, 255, 0}));
        ASSERT_TRUE(surface->releaseDC(dc).ok());
        EXPECT_EQ(colors(*surface, 0), (Row{0xFF, 0xFF, 0xFF}));
        EXPECT_EQ(colors(*surface, 1), (Row{0xFF, 0xFFFF00, 0xFF}));
        std::uint32_t first = 0;
        EXPECT_TRUE(surface->readFirstPixel(first).ok());
        EXPECT_EQ(first, 0xFF0000u);
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they end where memory does
TEST(SoftwareSurface, ContextNeedsMemory) {
    const auto surface = make({4096, 4096}, kSoftware565);  // whose picture of 32 bits takes 64 MiB
    std::uint64_t pages = 0;
    ASSERT_TRUE(std::ifstream("/proc/self/statm") >> pages);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    rlimit limited = before;
    limited.rlim_cur = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) + (32u << 20);
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limited), 0);
    TavraDC dc = nullptr;
    const Status got = surface->getDC(dc);
    EXPECT_EQ(setrlimit(RLIMIT_AS, &before), 0);
    EXPECT_EQ(got, Status(platform::kSurfaceOutOfMemory));
    EXPECT_EQ(dc, nullptr);
    EXPECT_TRUE(surface->fill(nullptr, 1).ok());  // it is not busy
    EXPECT_TRUE(surface->getDC(dc).ok());
    EXPECT_TRUE(surface->releaseDC(dc).ok());
}
#endif

TEST(SoftwareSurface, OverlayLiesOnTheScreen) {
    const auto image = make({2, 2}, kSoftwareUyvy), screen = make({4, 4});
    EXPECT_EQ(image->showOverlay({0, 0, 2, 2}, *screen, {3, 0, 5, 2}, 7),
              Status(platform::kSurfaceInvalidRectangle));
    EXPECT_EQ(image->showOverlay({0, 0, 3, 2}, *screen, {0, 0, 4, 4}, 7),
              Status(platform::kSurfaceInvalidRectangle));
    EXPECT_TRUE(image->showOverlay({0, 0, 2, 2}, *screen, {0, 0, 4, 4}, 7).ok());
    EXPECT_EQ(image->overlay().key, 7u);
    EXPECT_EQ(image->overlay().destination, (Area{0, 0, 4, 4}));
}

}  // namespace
}  // namespace tavra::test
