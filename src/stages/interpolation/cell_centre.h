// What the two cell-centre methods share: the green of the cell whose top-left sample is the pixel's own.
// Any thread.
#pragma once

#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {

// The mean of the two green samples of the cell at column i; `site` is all ones where the pixel's own sample
// is not green.
template <class Sample>
Sample cellGreen(const Sample* row, const Sample* below, Sample site, std::ptrdiff_t i) {
    return mean(pick(site, row[i + 1], row[i]), pick(site, below[i], below[i + 1]));
}

// By design: in the last column of an even width, a pixel whose own sample is green takes that sample alone.
// The methods are defined so; no mean with a stand-in is taken there, unlike on the rows between.
template <class Sample>
void keepGreenOfLastColumn(const Sample* row, const Place& place, Planes<Sample>& planes) {
    const std::size_t last = place.width - 1;
    if (place.width % 2 != 0 || place.greenFirst || !place.holds(last)) return;
    planes.green[last - place.x] = row[last - place.x];
}

}  // namespace tavra::interpolation
