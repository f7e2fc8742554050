// Which part of the image `tavra view` shows, and how large its window begins.
#pragma once

#include <cstdint>

#include "values.h"

namespace tavra::tool {

struct Extent {
    std::uint32_t width = 0, height = 0;

    friend bool operator==(const Extent&, const Extent&) = default;
};

Geometry wholeOf(Extent image);

// Half or twice the part, about its middle and within the image. It gets no smaller than 8 pixels on a side,
// and no larger than the image.
Geometry zoomedIn(const Geometry& part, Extent image);
Geometry zoomedOut(const Geometry& part, Extent image);

// The part moved by quarters of its size, as far as the image goes.
Geometry movedBy(const Geometry& part, Extent image, int quartersRight, int quartersDown);

// How many times larger than the whole image the part appears: 1, 2, 4, ...
double magnificationOf(const Geometry& part, Extent image);

// The image's size, at most the room that there is. A window that fits the image in keeps its shape.
Extent firstWindowSize(Extent image, Extent room, bool fit);

}  // namespace tavra::tool
