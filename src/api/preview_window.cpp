// Exports of the preview window: its life, title, style and size, and what it shows.
#include "display/preview_window.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "api/output.h"
#include "platform/text.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

TavraBool getPlace(TavraHandle handle, Status (*read)(TAVRA_COMMON_PARAM&, PreviewPlace&), std::uint32_t* x,
                   std::uint32_t* y, std::uint32_t* width, std::uint32_t* height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(x, y, width, height));
        PreviewPlace place;
        TAVRA_RETURN_IF_ERROR(read(camera, place));
        *x = place.x;
        *y = place.y;
        *width = place.width;
        *height = place.height;
        return Status();
    });
}

template <typename Character>
std::basic_string<Character> textOrEmpty(const Character* text) {
    return text != nullptr ? text : std::basic_string<Character>();
}

// Cut to the buffer, the terminating zero included.
template <typename Character>
void giveText(const std::basic_string<Character>& text, Character* buffer, std::uint32_t size) {
    if (size == 0) return;
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = 0;
}

bool beginsPair(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

// As much of the text as takes less than `size` bytes, in whole characters.
std::string narrowWithin(const std::u16string& text, std::uint32_t size) {
    const std::u16string_view whole = text;
    std::string narrow = platform::toNarrow(whole);
    std::size_t fits = 0, over = whole.size() + 1;  // units
    if (narrow.size() < size) return narrow;
    while (over - fits > 1) {
        const std::size_t tried = (fits + over) / 2;
        (platform::toNarrow(whole.substr(0, tried)).size() < size ? fits : over) = tried;
    }
    if (fits > 0 && beginsPair(whole[fits - 1])) --fits;
    return platform::toNarrow(whole.substr(0, fits));
}

}  // namespace

TavraBool Tavra_CreatePreviewWindowW(TavraHandle handle, const TavraWChar* name, std::uint32_t style,
                                     std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                     std::uint32_t height, TavraWindow parent, TavraMenu menu,
                                     TavraBool closable) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.preview.create(
            {textOrEmpty(name), style, {x, y, width, height}, parent, menu, closable != 0, handle});
    });
}

TavraBool Tavra_CreatePreviewWindowA(TavraHandle handle, const char* name, std::uint32_t style,
                                     std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                     std::uint32_t height, TavraWindow parent, TavraMenu menu,
                                     TavraBool closable) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.preview.create({platform::toWide(textOrEmpty(name)),
                                      style,
                                      {x, y, width, height},
                                      parent,
                                      menu,
                                      closable != 0,
                                      handle});
    });
}

TavraBool Tavra_DestroyPreviewWindow(TavraHandle handle) {
    return api::call(handle, [](TAVRA_COMMON_PARAM& camera) { return camera.preview.destroy(); });
}

TavraBool Tavra_GetPreviewWnd(TavraHandle handle, TavraWindow* window) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(window));
        *window = camera.preview.window();
        return *window != nullptr ? Status() : Status(error::kNoWindow);
    });
}

TavraBool Tavra_SetPreviewWindowNameA(TavraHandle handle, const char* name) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.preview.setTitle(platform::toWide(textOrEmpty(name)));
    });
}

TavraBool Tavra_SetPreviewWindowNameW(TavraHandle handle, const TavraWChar* name) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return camera.preview.setTitle(textOrEmpty(name)); });
}

TavraBool Tavra_GetPreviewWindowNameA(TavraHandle handle, char* name, std::uint32_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(name));
        std::u16string title;
        TAVRA_RETURN_IF_ERROR(camera.preview.title(title));
        giveText(narrowWithin(title, size), name, size);
        return Status();
    });
}

TavraBool Tavra_GetPreviewWindowNameW(TavraHandle handle, TavraWChar* name, std::uint32_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(name));
        std::u16string title;
        TAVRA_RETURN_IF_ERROR(camera.preview.title(title));
        giveText(title, name, size);
        return Status();
    });
}

TavraBool Tavra_SetPreviewWindowStyle(TavraHandle handle, std::uint32_t style) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.preview.setStyle(style); });
}

TavraBool Tavra_GetPreviewWindowStyle(TavraHandle handle, std::uint32_t* style) {
    return api::getNumber(handle, style, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.style();
        return Status();
    });
}

TavraBool Tavra_SetPreviewWindowSize(TavraHandle handle, std::uint32_t x, std::uint32_t y,
                                     std::uint32_t width, std::uint32_t height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.preview.setSize({x, y, width, height});
    });
}

TavraBool Tavra_GetPreviewWindowSize(TavraHandle handle, std::uint32_t* x, std::uint32_t* y,
                                     std::uint32_t* width, std::uint32_t* height) {
    const auto read = [](TAVRA_COMMON_PARAM& camera, PreviewPlace& place) {
        return camera.preview.size(place);
    };
    return getPlace(handle, read, x, y, width, height);
}

TavraBool Tavra_SetPreviewDestSize(TavraHandle handle, std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.setDestination({x, y, width, height});
        return Status();
    });
}

TavraBool Tavra_GetPreviewDestSize(TavraHandle handle, std::uint32_t* x, std::uint32_t* y,
                                   std::uint32_t* width, std::uint32_t* height) {
    const auto read = [](TAVRA_COMMON_PARAM& camera, PreviewPlace& place) {
        place = camera.preview.destination.load();
        return Status();
    };
    return getPlace(handle, read, x, y, width, height);
}

TavraBool Tavra_SetPreviewMaskSize(TavraHandle handle, std::uint32_t x, std::uint32_t y, std::uint32_t width,
                                   std::uint32_t height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.setMask({x, y, width, height});
        return Status();
    });
}

TavraBool Tavra_GetPreviewMaskSize(TavraHandle handle, std::uint32_t* x, std::uint32_t* y,
                                   std::uint32_t* width, std::uint32_t* height) {
    const auto read = [](TAVRA_COMMON_PARAM& camera, PreviewPlace& place) {
        place = camera.preview.mask.load();
        return Status();
    };
    return getPlace(handle, read, x, y, width, height);
}

TavraBool Tavra_SetAspectMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.preview.setAspectMode(mode); });
}

TavraBool Tavra_GetAspectMode(TavraHandle handle, std::uint8_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.aspectMode;
        return Status();
    });
}

TavraBool Tavra_SetMagnificationMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.magnificationMode = mode;
        return Status();
    });
}

TavraBool Tavra_GetMagnificationMode(TavraHandle handle, std::uint8_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.magnificationMode;
        return Status();
    });
}
