/** \file white_balance.h
 *  White balance: gains on the raw mosaic, set by hand or by the control loop.
 *
 *  A gain is a 16-bit number, 128 is 1.0. It is applied to 8-bit raw samples ahead of interpolation: a sample
 *  v becomes (v * gain) >> 7 for v below 32640 / gain (in whole numbers), and 255 from there on; with a gain
 *  of 0 all are 0. Rows and columns are taken in pairs: an odd last one stays. While both green gains are 128
 *  the green samples are not touched, and neither is any sample of a frame that is no mosaic of codes 2 to 5,
 *  quad mosaics included. With another green gain all frames but mono ones are mapped by pairs of pixels,
 *  quad mosaics too, whose blocks of 2 x 2 like samples then mix the gains: leave green at 128 there.
 *
 *  Gains and loop work on the mosaic transfer formats only (TAVRA_TRANSFER_MOSAIC_). The library's loop runs
 *  on the capture thread: it takes the weighted means of 10 frames, compares those of R and B with target
 *  percent of the mean of G, and then leaves 10 frames out. It multiplies the gains of R and B by wanted /
 *  measured mean, up to 1023 (a measured mean of 0 doubles the gain), never those of G, and only while the
 *  mean of G is above 10 and below 245. A camera of other than the oldest types with capability word 1 bit 8
 *  does the white balance itself: gains and mode then live in the camera, and the settings of the loop do not
 *  apply.
 *
 *  A null pointer where an array is read or a result is to go is TAVRA_ERROR_INVALID_ARGUMENT. What a call
 *  that fails would have given out stays as it was.
 *
 *  Calls wait for a frame whose samples are being multiplied. With white balance in the camera,
 *  TAVRA_ERROR_CONTROL_TRANSFER tells that a request failed.
 */
#ifndef TAVRA_API_WHITE_BALANCE_H
#define TAVRA_API_WHITE_BALANCE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the mode. In the library it is continuous at first on a colour camera, off on a mono-like one; with
 *  white balance in the camera it is what the camera holds.
 *
 *  \param handle camera
 *  \param mode TAVRA_WHITE_BALANCE_ code; not checked, in the library a code above 3 works like continuous
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetWhiteBalanceMode(TavraHandle handle, uint8_t mode);

/** Reads the mode. A one-push that has come to rest reads as manual.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_WHITE_BALANCE_ code
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetWhiteBalanceMode(TavraHandle handle, uint8_t* mode);

/** Sets the gains. The values are not compared with a maximum.
 *
 *  \param handle camera
 *  \param r gain of R, 128 is 1.0
 *  \param gr gain of G on the rows of R
 *  \param gb gain of G on the rows of B
 *  \param b gain of B
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera did not take them
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetWhiteBalanceGain(TavraHandle handle, uint16_t r, uint16_t gr, uint16_t gb,
                                              uint16_t b);

/** Reads the gains.
 *
 *  \param handle camera
 *  \param[out] r gain of R, 128 is 1.0
 *  \param[out] gr gain of G on the rows of R
 *  \param[out] gb gain of G on the rows of B
 *  \param[out] b gain of B
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetWhiteBalanceGain(TavraHandle handle, uint16_t* r, uint16_t* gr, uint16_t* gb,
                                              uint16_t* b);

/** Reads the highest gains: 640 each; with white balance in the camera 511 each, or what it tells.
 *
 *  \param handle camera
 *  \param[out] r highest gain of R
 *  \param[out] gr highest gain of G on the rows of R
 *  \param[out] gb highest gain of G on the rows of B
 *  \param[out] b highest gain of B
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetWhiteBalanceMaxGain(TavraHandle handle, uint16_t* r, uint16_t* gr, uint16_t* gb,
                                                 uint16_t* b);

/** Sets what the loop aims at; 100, 100 at first.
 *
 *  \param handle camera
 *  \param r mean of R in percent of the mean of G
 *  \param b mean of B in percent of the mean of G
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT white balance in the camera, and a value other than 100
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetWhiteBalanceTarget(TavraHandle handle, uint16_t r, uint16_t b);

/** Reads what the loop aims at; 100, 100 with white balance in the camera.
 *
 *  \param handle camera
 *  \param[out] r percent
 *  \param[out] b percent
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetWhiteBalanceTarget(TavraHandle handle, uint16_t* r, uint16_t* b);

/** Sets how far off the loop lets the scene be; 5, 5 at first.
 *
 *  \param handle camera
 *  \param tolerance stored and given back, no decision goes by it
 *  \param threshold in tenths of a level: a running adjustment stops when the distance of the means (R, B)
 *      from what is wanted, sqrt(dR^2 + dB^2), is below it; at rest the loop starts again at twice that
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT white balance in the camera
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetWhiteBalanceToleranceThreshold(TavraHandle handle, uint16_t tolerance,
                                                            uint16_t threshold);

/** Reads how far off the loop lets the scene be; 0, 0 with white balance in the camera.
 *
 *  \param handle camera
 *  \param[out] tolerance as set
 *  \param[out] threshold tenths of a level
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetWhiteBalanceToleranceThreshold(TavraHandle handle, uint16_t* tolerance,
                                                            uint16_t* threshold);

/** Sets the weights of the cells for white balance; all 1 at first. The grid is that of
 *  Tavra_SetControlArea().
 *
 *  \param handle camera
 *  \param weights 16 bytes: the cells of the top row from left to right, then the next row
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT with result 1: white balance in the camera, which has no weights
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAWBWeight(TavraHandle handle, const uint8_t* weights);

/** Reads the weights of the cells for white balance; all 1 with white balance in the camera.
 *
 *  \param handle camera
 *  \param[out] weights receives 16 bytes, as Tavra_SetAWBWeight()
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAWBWeight(TavraHandle handle, uint8_t* weights);

/** Applies the gains in force to a raw frame of the application, in place. The frames of the stream get them
 *  by themselves, after the raw callbacks. A frame stays as it is with mode 0, with the code of a mono frame,
 *  and on a camera whose own colour array is one of the patterns 12 to 15.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels
 *  \param colorArray TAVRA_COLOR_ARRAY_ code of the frame
 *  \param[in,out] image width x height bytes, rows dense, 8 bits a sample
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT white balance in the camera
 *  \threads any
 */
TAVRA_API TavraBool Tavra_RawWhiteBalance(TavraHandle handle, uint32_t width, uint32_t height,
                                          uint16_t colorArray, uint8_t* image);

/** Reads which modes the camera has.
 *
 *  \param handle camera
 *  \param[out] mask bit n for mode n. 0 for colour array 1; 15 for every other camera, unless it does the
 *      white balance itself and tells its modes (function 0xA0016)
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableWhiteBalanceMode(TavraHandle handle, uint32_t* mask);

#ifdef __cplusplus
}
#endif
#endif
