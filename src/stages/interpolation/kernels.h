// The interpolation methods as functions, for samples of bytes and of 16-bit words. What each computes is
// told in docs/image-chain.md. Pure: frame to image, any thread. Width and height are at least 1.
#pragma once

#include "stages/interpolation/planes.h"

namespace tavra::interpolation {

// Mosaics 2 to 5 to BGR; the image's pitch is at least 3.
template <class Sample>
void rawColor(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void nearestNeighbour(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void bilinear(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void fourTap(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void cellCentreBilinear(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void cellCentreNearest(const Frame<Sample>& frame, const Image<Sample>& image);

// Any one-plane frame: the samples as they are (pitch 1), or as grey in B, G and R (pitch at least 3).
template <class Sample>
void copyPlane(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void spreadGrey(const Frame<Sample>& frame, const Image<Sample>& image);

// Quad mosaic of array 16 to 19 to the ordinary mosaic of array 2 to 5, both of the same size.
template <class Sample>
void reduceQuad(const Frame<Sample>& frame, Sample* mosaic);

// Packed YCbCr of array 6 to 11: to BGR, or to a plane of one sample a pixel whatever the image's pitch.
template <class Sample>
void ycbcrToBgr(const Frame<Sample>& frame, const Image<Sample>& image);
template <class Sample>
void ycbcrToGrey(const Frame<Sample>& frame, const Image<Sample>& image);
// Samples of a dense row of a YCbCr layout.
std::size_t ycbcrRowSamples(std::uint16_t colorArray, std::size_t width);

}  // namespace tavra::interpolation
