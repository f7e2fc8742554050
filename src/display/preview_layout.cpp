#include "display/preview_layout.h"

#include <algorithm>

#include "tavra/tavra_types.h"

namespace tavra {
namespace {

// Half the free room.
std::uint32_t centred(std::uint32_t size, std::uint32_t room) {
    return size >= room ? 0 : (room - size) / 2;
}

PreviewPlace centredPlace(Size size, Size client) {
    return {centred(size.width, client.width), centred(size.height, client.height), size.width, size.height};
}

std::uint32_t truncated(float value) {
    constexpr float kMost = 4294967040.0f;  // largest below 2^32
    if (!(value > 0)) return 0;             // also no number
    return static_cast<std::uint32_t>(std::min(value, kMost));
}

PreviewPlace fitted(const PreviewPlace& mask, Size client) {
    const Size shape{mask.width, mask.height};
    if (shape == client) return {0, 0, client.width, client.height};
    const float ratio = static_cast<float>(mask.width) / static_cast<float>(mask.height);
    const float wanted = static_cast<float>(client.height) * ratio;
    const bool byWidth = wanted > static_cast<float>(client.width);
    const Size size = byWidth ? Size{client.width, truncated(static_cast<float>(client.width) / ratio)}
                              : Size{truncated(wanted), client.height};
    return centredPlace(size, client);
}

std::int32_t lastPosition(const platform::ScrollBar& bar) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(bar.top) - bar.page + 1);
}

platform::ScrollBar barFor(bool shown, std::uint32_t end, std::uint32_t page, std::uint32_t position) {
    if (!shown) return {};
    platform::ScrollBar bar{static_cast<std::int32_t>(end - 1), page, 0};
    const std::int32_t last = std::max(lastPosition(bar), 0);
    bar.position = std::min(static_cast<std::int32_t>(position), last);
    return bar;
}

// Offset of a mask of the new size around a point.
std::uint32_t offsetAround(std::uint32_t point, std::uint32_t size, std::uint32_t image) {
    const std::uint32_t half = size / 2;
    if (size == image) return 0;
    if (half + point >= image) return image - size;
    return point > half ? point - half : 0;
}

}  // namespace

Rectangle rectangleOf(const PreviewPlace& place, std::uint32_t scrollX, std::uint32_t scrollY) {
    const std::uint32_t left = place.x - scrollX;
    const std::uint32_t top = place.y - scrollY;
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(left + place.width), static_cast<std::int32_t>(top + place.height)};
}

PreviewPlace destinationFor(std::uint8_t aspectMode, const PreviewPlace& present, const PreviewPlace& mask,
                            Size image, Size client) {
    switch (aspectMode) {
        case TAVRA_ASPECT_FIT: return fitted(mask, client);
        case TAVRA_ASPECT_STRETCH: return {0, 0, client.width, client.height};
        case TAVRA_ASPECT_MASK: return centredPlace({mask.width, mask.height}, client);
        case TAVRA_ASPECT_FREE: return present;
        case TAVRA_ASPECT_SIZE: return centredPlace({present.width, present.height}, client);
        default: return centredPlace(image, client);
    }
}

// Each bar takes room from the other axis.
ScrollBars scrollBarsFor(const ScrollInput& in) {
    bool horizontal = in.content.width > in.window.width;
    bool vertical = in.content.height > in.window.height;
    if (horizontal && !vertical) {
        vertical = std::uint64_t{in.content.height} + in.horizontalThickness > in.window.height;
    } else if (vertical && !horizontal) {
        horizontal = std::uint64_t{in.content.width} + in.verticalThickness > in.window.width;
    }
    return {barFor(in.horizontalAllowed && horizontal, in.destination.x + in.destination.width,
                   in.client.width, in.scrollX),
            barFor(in.verticalAllowed && vertical, in.destination.y + in.destination.height, in.client.height,
                   in.scrollY)};
}

std::int32_t scrolledPosition(const platform::ScrollBar& bar, platform::ScrollCode code, std::int32_t thumb) {
    using enum platform::ScrollCode;
    const auto page = static_cast<std::int64_t>(bar.page);
    std::int64_t position = bar.position;
    switch (code) {
        case LineBack: position -= position < 1 ? 0 : 1; break;
        case LineOn: ++position; break;
        case PageBack: position = page < position ? position - page : 0; break;
        case PageOn: position += page; break;
        case ThumbReleased:
        case ThumbMoves: position = thumb; break;
        case First: position = 0; break;
        case Last: position = lastPosition(bar); break;
    }
    position = std::min<std::int64_t>(position, lastPosition(bar));
    return static_cast<std::int32_t>(std::max<std::int64_t>(position, 0));
}

PreviewPlace magnified(const PreviewPlace& mask, const PreviewPlace& destination, Size image, std::uint32_t x,
                       std::uint32_t y, bool smaller) {
    if (destination.width == 0 || destination.height == 0) return mask;  // no click can be in it
    Size smallest = image;
    while (smallest.width != 0 && smallest.height != 0 && (smallest.width | smallest.height) % 2 == 0) {
        smallest = {smallest.width / 2, smallest.height / 2};
    }
    const std::uint32_t pointX = x * mask.width / destination.width + mask.x;
    const std::uint32_t pointY = y * mask.height / destination.height + mask.y;
    const auto along = [smaller](std::uint32_t size, std::uint32_t whole, std::uint32_t least) {
        return smaller ? std::min(2 * size, whole) : std::max(size / 2, least);
    };
    PreviewPlace next;
    next.width = along(mask.width, image.width, smallest.width);
    next.height = along(mask.height, image.height, smallest.height);
    next.x = offsetAround(pointX, next.width, image.width);
    next.y = offsetAround(pointY, next.height, image.height);
    return next;
}

}  // namespace tavra
