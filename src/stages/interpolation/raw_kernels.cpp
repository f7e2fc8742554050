// Off and raw colour: samples without interpolation.
#include <cstring>

#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

struct RawColor {
    static constexpr std::size_t kRows = 1;
    static std::size_t sourceRow(std::size_t, std::size_t y, std::size_t) { return y; }

    template <class Sample>
    static void tile(const TileRows<Sample, kRows>& rows, const Sample* sites, const Place&,
                     Planes<Sample>& planes) {
        const Sample* const row = rows[0];
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            planes.own[i] = pick(sites[i], row[i], Sample{0});
            planes.green[i] = pick(sites[i], Sample{0}, row[i]);
            planes.lacking[i] = 0;
        }
    }
};

}  // namespace

template <class Sample>
void rawColor(const Frame<Sample>& frame, const Image<Sample>& image) {
    interpolate<RawColor>(frame, image);
}

template <class Sample>
void copyPlane(const Frame<Sample>& frame, const Image<Sample>& image) {
    const std::size_t rowBytes = frame.width * sizeof(Sample);
    if (frame.stride == image.stride) {
        // One block, with whatever lies between the rows. The last row may end without padding.
        std::memcpy(image.bytes, frame.bytes, frame.stride * (frame.height - 1) + rowBytes);
        return;
    }
    for (std::size_t y = 0; y < frame.height; ++y) std::memcpy(image.row(y), frame.row(y), rowBytes);
}

template <class Sample>
void spreadGrey(const Frame<Sample>& frame, const Image<Sample>& image) {
    for (std::size_t y = 0; y < frame.height; ++y) {
        const Sample* const grey = frame.row(y);
        writeBgr(image.row(y), image.pitch, grey, grey, grey, frame.width);
    }
}

template void rawColor(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void rawColor(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);
template void copyPlane(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void copyPlane(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);
template void spreadGrey(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void spreadGrey(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
