/** \file interpolation.h
 *  From a raw frame to an image: colour interpolation and conversions.
 *
 *  S(x, y) is the sample in column x and row y of the raw frame. A pixel of the image has its channels in the
 *  order B, G, R; a fourth byte is not written. All arithmetic is in integers, and >> truncates.
 *
 *  Off (method 0, or a mono-like colour array under any method): one byte a pixel is a copy, with three and
 *  more each sample goes to B, G and R.
 *
 *  Method 1, raw colour: the sample in the channel of its colour, 0 in the two others.
 *
 *  Method 2, nearest: the image is cut into cells of 2 x 2 from the origin; the pixels of a cell share its R
 *  and its B, and each row takes the G in that row. An odd last column takes what lies outside from the cell
 *  to its left, an odd last row from the row above.
 *
 *  Method 3, bilinear: first along each row, a colour missing at a site is the mean of its two neighbours, (a
 *  + b) >> 1, at the first and last column the one neighbour. Then the colour that a row lacks is the mean (a
 *  + b) >> 1 of the rows above and below, in the first row a copy of row 1, in the last row of an even height
 *  of row h - 2. G is never averaged between rows.
 *
 *  Method 4, four-tap: as method 3, with `-(a + d) / 8 + (b + c) * 5 / 8` of the four nearest samples
 *  wherever all lie inside, the outer term rounded half away from zero and the inner half upward, each for
 *  itself, and the sum clamped to 0 to 255 at any sample depth; near the borders the mean of method 3.
 *
 *  Method 5, cell bilinear: the pixel at (x, y) is computed for the middle of the cell whose top-left sample
 *  is (x, y). G is the mean of the cell's two G samples, R and B are (9 near + 3 side + 3 side + far) >> 4 of
 *  the four nearest sites of the colour. A site outside is replaced by the nearest one of its colour inside
 *  on that axis. The last column of an even width takes G from its own sample where that is G. With an odd
 *  height the last three rows are computed from rows h - 3 and h - 2.
 *
 *  Method 6, cell nearest: R and B of the cell whose top-left sample is (x, y), G the mean of its two.
 *
 *  A quad colour array is reduced first: each block of 2 x 2 like samples becomes its truncated mean, and the
 *  means are laid out as an ordinary mosaic of the frame's size.
 *
 *  Frames must be at least 4 rows high for method 3, 6 x 6 for method 4, 3 x 3 for methods 5 and 6.
 */
#ifndef TAVRA_API_INTERPOLATION_H
#define TAVRA_API_INTERPOLATION_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Interpolates a raw frame of 8-bit samples, for example of a raw snapshot, with the camera's colour array.
 *  Nothing else is applied: no gamma, no matrix, no mirror.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels
 *  \param source width x height samples, rows dense
 *  \param[out] destination receives the image; each row is padded to a multiple of four bytes
 *  \param method TAVRA_INTERPOLATION_ code, 0 to 6
 *  \param format TAVRA_PIXEL_ code of the destination: 1, 4 or 8. With 1 the method must be 0 or the camera
 *      mono-like
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no such method or colour array, or a format of two bytes a pixel;
 *      nothing is written
 *  \threads any; the buffers are the caller's, calls with buffers of their own may run beside each other
 */
TAVRA_API TavraBool Tavra_ConvertRawToBGR(TavraHandle handle, uint32_t width, uint32_t height,
                                          const uint8_t* source, uint8_t* destination, uint8_t method,
                                          uint32_t format);

/** Reduces a raw frame to 8 bits a sample: the top eight bits, truncated.
 *
 *  Codes in 16-bit words are shifted right by 2 (10 bits), 4 (12 bits), 6 (14 bits) or 8 (16 bits). Packed
 *  codes are read as a stream of bits, low bits first, each row from a byte of its own: (width x bits + 7) /
 *  8 bytes a row.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels; a frame without pixels succeeds
 *  \param transferCode TAVRA_TRANSFER_ code of 10 bits and more, mosaic or mono
 *  \param source the frame, rows dense
 *  \param[out] destination receives width x height bytes; may be the same memory as source
 *  \return 1, or 0 if the code is none of these, without a last error
 *  \errors none of its own
 *  \threads any; the buffers are the caller's
 */
TAVRA_API TavraBool Tavra_ConvTo8BitsImage(TavraHandle handle, uint32_t width, uint32_t height,
                                           uint32_t transferCode, const void* source, uint8_t* destination);

/** Exchanges the first and third byte of each pixel in place.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height rows; 0 succeeds
 *  \param[in,out] image width x height x 3 bytes, back to back: rows must not be padded
 *  \return 1
 *  \errors none of its own
 *  \threads any; the buffer is the caller's
 */
TAVRA_API TavraBool Tavra_ConvertBitmapBGR24ToRGB24(TavraHandle handle, uint32_t width, uint32_t height,
                                                    uint8_t* image);

/** Sets the method for preview images. It takes effect with the next frame. A colour camera starts with
 *  method 3, a mono camera with 0.
 *
 *  \param handle camera
 *  \param method TAVRA_INTERPOLATION_ code, 0 to 5
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT method above 5
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetColorInterpolationMethod(TavraHandle handle, uint8_t method);

/** Reads the method for preview images.
 *
 *  \param handle camera
 *  \param[out] method TAVRA_INTERPOLATION_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetColorInterpolationMethod(TavraHandle handle, uint8_t* method);

#ifdef __cplusplus
}
#endif
#endif
