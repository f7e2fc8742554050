/** \file enhance.h
 *  Sharpness, noise reduction and chroma suppression.
 */
#ifndef TAVRA_API_ENHANCE_H
#define TAVRA_API_ENHANCE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the sharpening of the preview image, after gamma.
 *
 *  With A the mean of a pixel's eight neighbours, rounded, and d the pixel's difference from it, nothing
 *  happens while |d| is not above coring; else t = min(4095, trunc((|d| - coring) * gain / 100 + 0.5)) is
 *  added for a brighter and subtracted for a darker pixel, limited to 0 to 255. On a colour image d is taken
 *  on luminance, Y = 0.299 R + 0.587 G + 0.114 B with each term rounded (ITU-R BT.601-7, 2.5.1), and the same
 *  t goes to all three channels. Of t the low byte is used: a gain above 100 on strong edges can wrap (only
 *  the darkening of colour images takes it whole). The product with gain is a sum of gain / 100 in single
 *  precision, whose rounding can show where t lies half-way. The outermost rows and columns stay. A camera
 *  starts with mode 0, gain 0, coring 0; a change takes effect with the next frame.
 *
 *  \param handle camera
 *  \param mode 0: off, any other value: on
 *  \param gain hundredths, 0 to 65535; 100 adds the whole difference
 *  \param coring levels up to which a difference is left alone, 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits for an image that is being sharpened
 */
TAVRA_API TavraBool Tavra_SetSharpnessMode(TavraHandle handle, uint8_t mode, uint16_t gain, uint8_t coring);

/** Reads the sharpening, as Tavra_SetSharpnessMode() took it.
 *
 *  \param handle camera
 *  \param[out] mode 0: off
 *  \param[out] gain hundredths
 *  \param[out] coring levels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits for an image that is being sharpened
 */
TAVRA_API TavraBool Tavra_GetSharpnessMode(TavraHandle handle, uint8_t* mode, uint16_t* gain,
                                           uint8_t* coring);

/** Sets the noise reduction on raw frames. It runs in triggered exposure modes only (a trigger on, and an
 *  exposure mode of trigger width or sub trigger in the trigger word), as they stood when the stream started.
 *
 *  TAVRA_NOISE_REDUCTION_MEDIAN lowers a sample to the median of itself and its neighbours if it lies above:
 *  of their values in descending order the third of five, the second of three, the mean of the middle two of
 *  four and of two, cut off. Neighbours are those left, right, above and below on mono frames; on a mosaic
 *  those two samples away for R and B, and the four diagonal ones for G; those outside the frame are left
 *  out. Dark samples stay.
 *
 *  TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME stores each frame, less the least value of each of the four
 *  positions of a 2 x 2 cell, as the dark frame, and gives the frame on as it is: run it for a frame with the
 *  lens capped. (An odd last row or column keeps its black level.) TAVRA_NOISE_REDUCTION_DARK_FRAME then
 *  subtracts it, not below 0; a sample that was saturated (253 and above) and fell below is raised to the
 *  third of itself and four neighbours in descending order, on mono frames the diagonal ones. The dark frame
 *  must match the frame in size and colour array, and is lost when the camera is closed.
 *
 *  Only frames of the mosaic transfer formats (TAVRA_TRANSFER_MOSAIC_) come here. The median serves the
 *  colour arrays 1, 2 and 5, saturated samples are raised for 1 and 2; a frame with another one, or without a
 *  matching dark frame, is left as it stands at that point.
 *
 *  \param handle camera
 *  \param mode TAVRA_NOISE_REDUCTION_ code; not checked, an unknown one acts as off
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetNoiseReductionMode(TavraHandle handle, uint32_t mode);

/** Reads the noise reduction mode.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_NOISE_REDUCTION_ code; 0 on failure
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetNoiseReductionMode(TavraHandle handle, uint32_t* mode);

/** Sets the chroma suppression in the highlights; the same as Tavra_SetHighChromaSuppression().
 *
 *  \param handle camera
 *  \param threshold luminance, 0 to 255; more acts as 255
 *  \param strength 0 to 255; more acts as 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength);

/** Reads the chroma suppression in the highlights; the same as Tavra_GetHighChromaSuppression().
 *
 *  \param handle camera
 *  \param[out] threshold luminance
 *  \param[out] strength 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetChromaSuppression(TavraHandle handle, uint16_t* threshold, uint16_t* strength);

/** Sets the chroma suppression in the highlights, the last step on a colour image.
 *
 *  A pixel whose luminance Y lies above the threshold loses colour: with k = min(16384, (Y - threshold + 1) *
 *  strength), B and R move towards G by k / 16384 of their distance. Where high and low suppression both
 *  apply, the larger k counts. A threshold of 255 or a strength of 0 turns it off, which is how a camera
 *  starts.
 *
 *  \param handle camera
 *  \param threshold luminance, 0 to 255; more acts as 255
 *  \param strength suppression for each level above the threshold in 1/16384, 0 to 255; more acts as 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; a change may show in the middle of a frame
 */
TAVRA_API TavraBool Tavra_SetHighChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength);

/** Reads the chroma suppression in the highlights.
 *
 *  \param handle camera
 *  \param[out] threshold luminance
 *  \param[out] strength 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetHighChromaSuppression(TavraHandle handle, uint16_t* threshold,
                                                   uint16_t* strength);

/** Sets the chroma suppression in the shadows: as Tavra_SetHighChromaSuppression() for pixels below the
 *  threshold, with k = min(16384, (threshold - Y + 1) * strength). A threshold or strength of 0 turns it off.
 *
 *  \param handle camera
 *  \param threshold luminance, 0 to 255; more acts as 255
 *  \param strength suppression for each level below the threshold in 1/16384, 0 to 255; more acts as 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; a change may show in the middle of a frame
 */
TAVRA_API TavraBool Tavra_SetLowChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength);

/** Reads the chroma suppression in the shadows.
 *
 *  \param handle camera
 *  \param[out] threshold luminance
 *  \param[out] strength 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetLowChromaSuppression(TavraHandle handle, uint16_t* threshold,
                                                  uint16_t* strength);

#ifdef __cplusplus
}
#endif
#endif
