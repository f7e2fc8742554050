#include "view_mask.h"

#include <algorithm>

namespace tavra::tool {
namespace {

constexpr std::uint32_t kSmallestSide = 8;

// One axis of a part.
struct Span {
    std::uint32_t begin, size;
};

// The same middle with another size, pushed back into the image.
Span resized(Span span, std::uint32_t size, std::uint32_t whole) {
    const std::int64_t begin = std::int64_t{span.begin} + span.size / 2 - size / 2;
    const std::int64_t most = std::int64_t{whole} - size;
    return {static_cast<std::uint32_t>(std::clamp<std::int64_t>(begin, 0, std::max<std::int64_t>(most, 0))),
            size};
}

Span halved(Span span, std::uint32_t whole) {
    const std::uint32_t least = std::min(kSmallestSide, span.size);
    return resized(span, std::max(span.size / 2, least), whole);
}

// An odd side loses its last pixel on the way in, so that twice the part may miss the whole by a few.
Span doubled(Span span, std::uint32_t whole) {
    const std::uint64_t twice = std::uint64_t{span.size} * 2;
    const bool nearlyWhole = twice + twice / 16 >= whole;
    return resized(span, nearlyWhole ? whole : static_cast<std::uint32_t>(twice), whole);
}

Span moved(Span span, std::uint32_t whole, int quarters) {
    const std::int64_t begin = std::int64_t{span.begin} + std::int64_t{span.size} * quarters / 4;
    const std::int64_t most = std::int64_t{whole} - span.size;
    return {static_cast<std::uint32_t>(std::clamp<std::int64_t>(begin, 0, std::max<std::int64_t>(most, 0))),
            span.size};
}

Span horizontal(const Geometry& part) {
    return {part.x, part.width};
}

Span vertical(const Geometry& part) {
    return {part.y, part.height};
}

Geometry joined(Span x, Span y) {
    return {x.size, y.size, x.begin, y.begin};
}

}  // namespace

Geometry wholeOf(Extent image) {
    return {image.width, image.height, 0, 0};
}

Geometry zoomedIn(const Geometry& part, Extent image) {
    return joined(halved(horizontal(part), image.width), halved(vertical(part), image.height));
}

Geometry zoomedOut(const Geometry& part, Extent image) {
    return joined(doubled(horizontal(part), image.width), doubled(vertical(part), image.height));
}

Geometry movedBy(const Geometry& part, Extent image, int quartersRight, int quartersDown) {
    return joined(moved(horizontal(part), image.width, quartersRight),
                  moved(vertical(part), image.height, quartersDown));
}

double magnificationOf(const Geometry& part, Extent image) {
    return part.width == 0 ? 1 : static_cast<double>(image.width) / part.width;
}

Extent firstWindowSize(Extent image, Extent room, bool fit) {
    const Extent cut{std::min(image.width, room.width), std::min(image.height, room.height)};
    if (!fit || cut == image || image.width == 0 || image.height == 0) return cut;
    const double scale = std::min(static_cast<double>(room.width) / image.width,
                                  static_cast<double>(room.height) / image.height);
    const auto side = [scale](std::uint32_t size) {
        return std::max<std::uint32_t>(1, static_cast<std::uint32_t>(size * scale));
    };
    return {side(image.width), side(image.height)};
}

}  // namespace tavra::tool
