// The headers from C++: types that make calls pleasant, the values of the code tables, and the functions of
// tavra_host.h linked from C++ (so their linkage is C). What is wrong fails to compile, or ends with 1.
#include <tavra/tavra_api.h>
#include <tavra/tavra_host.h>

#include <cstdio>
#include <string_view>
#include <type_traits>

// A wide literal can be passed as it is.
static_assert(std::is_same_v<TavraWChar, char16_t>);
static_assert(std::is_invocable_r_v<TavraHandle, decltype(&Tavra_OpenByDevicePathW), decltype(u"")>);
// A lambda without capture can be registered.
static_assert(
    std::is_convertible_v<decltype([](std::uint32_t, std::uint32_t, void*) -> TavraBool { return 1; }),
                          TavraSmfProgressCallback>);

// Each code stands for itself in a mask or a wire word, so its value is part of the interface.
static_assert(TAVRA_TRANSFER_YCBCR444_LIMITED == 0x4000000 && TAVRA_TRANSFER_MOSAIC_8 == 1);
static_assert(TAVRA_PIXEL_MONO_8 == 1 && TAVRA_PIXEL_BGR_24 == 4 && TAVRA_PIXEL_BGR_32 == 8);
static_assert(TAVRA_CLOCK_MODE_FREE == 0x80000000u);
static_assert(TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME == 0x80000000u);
static_assert(TAVRA_SETTING_FILE_NO_GEOMETRY == 0xFFFF0000u);
static_assert(TAVRA_FUNCTION_PRIORITY_MODE == 0xA001B && TAVRA_FUNCTION_REGISTERS == 64);
static_assert((TAVRA_MIRROR_HORIZONTAL | TAVRA_MIRROR_VERTICAL | TAVRA_MIRROR_CAMERA_HORIZONTAL |
               TAVRA_MIRROR_CAMERA_VERTICAL) == 0x33);

#if !defined(_WIN32)
static int receiverFromCpp() {
    TavraWindow receiver = TavraHost_CreateReceiver();
    TavraMessage message{};
    const bool empty = receiver != nullptr && TavraHost_WaitMessage(receiver, &message, 0) == 0;
    TavraHost_DestroyReceiver(receiver);
    if (!empty) std::fputs("a new receiver is not there, or not empty\n", stderr);
    return empty ? 0 : 1;
}
#else
static int receiverFromCpp() {
    return 0;
}
#endif

int main() {
    return receiverFromCpp();
}
