// How much of a movie file is read.
#pragma once

#include <cstdint>

namespace tavra::tool {

enum class ProbeDepth : std::uint8_t {
    Index,   // headers and indexes, which are believed: a moment, however long the movie
    Frames,  // the head of every frame too, which a disk has to seek for
};

}  // namespace tavra::tool
