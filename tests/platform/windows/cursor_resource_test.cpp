// The zoom cursors as the library carries them.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstdint>

namespace tavra::platform {
namespace {

constexpr int kSide = 32;

// What a cursor does to a pixel of the screen.
enum class Does { Black, White, Keeps, Inverts };

// Of a cursor in two colours: a bit a pixel that keeps the screen, and below these the bits that are turned.
struct Cursor {
    ICONINFO info{};
    std::array<std::uint8_t, kSide * 2 * kSide / 8> bits{};

    Does at(int x, int y) const {
        const bool keeps = bit(x, y), turns = bit(x, y + kSide);
        if (keeps) return turns ? Does::Inverts : Does::Keeps;
        return turns ? Does::White : Does::Black;
    }

  private:
    bool bit(int x, int y) const {
        return (bits[static_cast<std::size_t>(y * kSide + x) / 8] >> (7 - x % 8) & 1) != 0;
    }
};

Cursor cursorOf(HMODULE library, WORD number) {
    Cursor cursor;
    const HCURSOR loaded = LoadCursorW(library, MAKEINTRESOURCEW(number));
    if (loaded == nullptr || !GetIconInfo(loaded, &cursor.info)) {
        ADD_FAILURE() << "no cursor " << number;
        return cursor;
    }
    EXPECT_EQ(cursor.info.fIcon, FALSE);
    EXPECT_EQ(cursor.info.hbmColor, nullptr);
    EXPECT_EQ(GetBitmapBits(cursor.info.hbmMask, static_cast<LONG>(cursor.bits.size()), cursor.bits.data()),
              static_cast<LONG>(cursor.bits.size()));
    DeleteObject(cursor.info.hbmMask);
    return cursor;
}

TEST(CursorResources, AreAGlassWithAPlusAndOneWithAMinus) {
    const HMODULE library = LoadLibraryExA("tavra.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(library, nullptr);
    const Cursor in = cursorOf(library, 110), out = cursorOf(library, 111);
    for (const Cursor* const cursor : {&in, &out}) {
        EXPECT_EQ(cursor->info.xHotspot, 10u) << "the middle of the glass";
        EXPECT_EQ(cursor->info.yHotspot, 10u);
        EXPECT_EQ(cursor->at(7, 10), Does::Black) << "the bar";
        EXPECT_EQ(cursor->at(10, 2), Does::Black) << "the rim";
        EXPECT_EQ(cursor->at(10, 0), Does::White) << "its outline";
        EXPECT_EQ(cursor->at(22, 22), Does::Black) << "the handle";
        EXPECT_EQ(cursor->at(30, 2), Does::Keeps);
    }
    EXPECT_EQ(in.at(10, 7), Does::Black);
    EXPECT_EQ(out.at(10, 7), Does::Keeps);
    FreeLibrary(library);
}

}  // namespace
}  // namespace tavra::platform
