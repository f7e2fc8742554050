/** \file color.h
 *  Colour matrix, hue and saturation of the preview image.
 *
 *  The stage follows gamma and sharpness and touches colour images only. Matrix and hue/saturation are
 *  multiplied once, when one of them is set, into tables; a change takes effect between two frames. With both
 *  off the image is not touched.
 *
 *  With C the matrix divided by 100, h the hue and S the saturation divided by 100, s = sin h and c = cos h,
 *  the result is H x C applied to (R, G, B), plus the offsets:
 *
 *  - row of R: H00 = (0.7011 c + 0.2989 s) S + 0.2989; H01 = ((s - c) S + 1) 0.5866; H02 = 0.1145 - (0.1145 c
 *    + 0.8855 s) S
 *  - row of B: H20 = (0.7011 s - 0.2989 c) S + 0.2989; H21 = (1 - (c + s) S) 0.5866; H22 = (0.8855 c - 0.1145
 *    s) S + 0.1145
 *  - row of G: such that 0.2989 R + 0.5866 G + 0.1145 B stays as it was
 *
 *  A table entry for the level i holds coefficient x (i + 1), accumulated in single precision and truncated;
 *  so the identity matrix, once on, adds one level. Results are limited to 0 to 255.
 */
#ifndef TAVRA_API_COLOR_H
#define TAVRA_API_COLOR_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the colour matrix.
 *
 *  \param handle camera
 *  \param mode TAVRA_COLOR_MATRIX_ON, or TAVRA_COLOR_MATRIX_OFF to restore the identity
 *  \param matrix 12 values in hundredths, 100 is 1.0: three rows of four for R, G and B, each (from R, from
 *      G, from B, offset); an offset of 100 is one level. Not read with mode 0
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT another mode, or no matrix with mode 0xFF; nothing changes
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetColorMatrix(TavraHandle handle, uint8_t mode, const int16_t* matrix);

/** Reads the colour matrix.
 *
 *  \param handle camera
 *  \param[out] mode 0 or 0xFF; may be null
 *  \param[out] matrix receives 12 values; may be null
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetColorMatrix(TavraHandle handle, uint8_t* mode, int16_t* matrix);

/** Sets hue and saturation.
 *
 *  \param handle camera
 *  \param mode 1: on; 0: off, with hue 0 and saturation 100
 *  \param hue angle in tenths of a degree, a signed value carried in 16 bits (`(uint16_t)-300` is -30
 *      degrees)
 *  \param saturation hundredths; 100: unchanged, 0: grey
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT mode above 1; nothing changes
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetHueSaturationMode(TavraHandle handle, uint8_t mode, uint16_t hue,
                                               uint16_t saturation);

/** Reads hue and saturation.
 *
 *  \param handle camera
 *  \param[out] mode 0 or 1
 *  \param[out] hue tenths of a degree, a signed value carried in 16 bits
 *  \param[out] saturation hundredths
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetHueSaturationMode(TavraHandle handle, uint8_t* mode, uint16_t* hue,
                                               uint16_t* saturation);

#ifdef __cplusplus
}
#endif
#endif
