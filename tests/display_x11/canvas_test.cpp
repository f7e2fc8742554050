// The pixels of a window, with memory that the server shares and without: what is shown is the same.
#include "platform/linux/x11_canvas.h"

#include <gtest/gtest.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "display_x11/shared_memory.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

enum class Refusal { None, OfMaking, OfAttaching, OfServer };

Refusal refusal = Refusal::None;  // for all calls below

}  // namespace

// The linker sends the library's use of shared memory here (--wrap).
extern "C" {
int __real_shmget(key_t, std::size_t, int);
int __wrap_shmget(key_t, std::size_t, int);
void* __real_shmat(int, const void*, int);
void* __wrap_shmat(int, const void*, int);

int __wrap_shmget(key_t key, std::size_t size, int flags) {
    if (refusal != Refusal::OfMaking) return __real_shmget(key, size, flags);
    errno = ENOSPC;
    return -1;
}

void* __wrap_shmat(int segment, const void* at, int flags) {
    if (refusal != Refusal::OfAttaching) return __real_shmat(segment, at, flags);
    errno = ENOMEM;
    return reinterpret_cast<void*>(-1);
}
}

namespace {

using platform::Size;
using Picture = std::vector<std::uint32_t>;

decltype(&xcb_shm_attach_checked) attach = nullptr;  // the library's

// How the server answers to a segment that it may not have: this one does not exist for anybody.
xcb_void_cookie_t attachAnother(xcb_connection_t* connection, xcb_shm_seg_t name, std::uint32_t,
                                std::uint8_t readOnly) {
    return attach(connection, name, 0x7FFFFFFF, readOnly);
}

class Canvas : public testing::TestWithParam<Refusal> {
  protected:
    Canvas() {
        EXPECT_TRUE(server.started()) << "Xvfb does not start: scripts/install-deps test";
        EXPECT_TRUE(connection.open().ok());
        EXPECT_TRUE(connection.shmWorks) << "the server shares no memory";
        refusal = GetParam();
        if (refusal == Refusal::OfServer) {
            refusing = *connection.x;
            attach = std::exchange(refusing.xcb_shm_attach_checked, attachAnother);
            connection.x = &refusing;
        }
        window = server.makeWindow(40, 30);
        EXPECT_TRUE(server.looksLike(window, {40, 30}, Picture(40 * 30, 0)));  // the server has made it
        context = connection.x->xcb_generate_id(connection.raw);
        connection.x->xcb_create_gc(connection.raw, context, window, 0, nullptr);
    }
    ~Canvas() override { refusal = Refusal::None; }

    // Each pixel another, and another with each picture.
    static Picture picture(Size size, std::uint32_t number) {
        Picture pixels;
        for (std::uint32_t i = 0; i < size.width * size.height; ++i) pixels.push_back(number * 0x10000 + i);
        return pixels;
    }
    void draw(const platform::X11Canvas& canvas, const Picture& pixels) const {
        std::memcpy(canvas.area().pixels, pixels.data(), pixels.size() * 4);
        canvas.show(window, context, 0, 0);
        EXPECT_TRUE(connection.synchronise());
    }

    XServer server;
    platform::X11Connection connection;
    platform::X11Library refusing;
    xcb_window_t window = 0;
    xcb_gcontext_t context = 0;
};

std::string nameOf(const testing::TestParamInfo<Refusal>& which) {
    switch (which.param) {
        case Refusal::None: return "Shared";
        case Refusal::OfMaking: return "NotMade";
        case Refusal::OfAttaching: return "NotAttached";
        default: return "NotTakenByTheServer";
    }
}

INSTANTIATE_TEST_SUITE_P(Memory, Canvas,
                         testing::Values(Refusal::None, Refusal::OfMaking, Refusal::OfAttaching,
                                         Refusal::OfServer),
                         nameOf);

TEST_P(Canvas, ShowsItsPixelsInEverySize) {
    platform::X11Canvas canvas(connection);
    std::uint32_t number = 1;
    for (const Size size : {Size{40, 30}, Size{1, 1}, Size{7, 3}, Size{40, 30}}) {
        ASSERT_TRUE(canvas.resize(size));
        EXPECT_EQ(canvas.area().width, size.width);
        EXPECT_EQ(canvas.area().height, size.height);
        for (int again = 0; again < 2; ++again, ++number) {
            draw(canvas, picture(size, number));
            EXPECT_TRUE(server.looksLike(window, size, picture(size, number))) << number;
        }
    }
}

TEST_P(Canvas, BeginsBlack) {
    platform::X11Canvas canvas(connection);
    ASSERT_TRUE(canvas.resize({7, 3}));
    draw(canvas, picture({7, 3}, 5));
    ASSERT_TRUE(canvas.resize({3, 7}));
    canvas.show(window, context, 0, 0);
    EXPECT_TRUE(connection.synchronise());
    EXPECT_TRUE(server.looksLike(window, {3, 7}, Picture(21, 0)));
}

TEST_P(Canvas, LeavesNoMemoryBehind) {
    const std::size_t shared = GetParam() == Refusal::None ? 1 : 0;
    {
        platform::X11Canvas canvas(connection);
        for (std::uint32_t side = 1; side <= 30; ++side) {
            ASSERT_TRUE(canvas.resize({side, side}));
            draw(canvas, picture({side, side}, side));
            EXPECT_EQ(segmentsAttached(), shared);
            EXPECT_EQ(segmentsMade(), shared);
        }
    }
    EXPECT_EQ(segmentsAttached(), 0u);
    EXPECT_TRUE(connection.synchronise());
    EXPECT_TRUE(noSegmentStays());
}

}  // namespace
}  // namespace tavra::test
