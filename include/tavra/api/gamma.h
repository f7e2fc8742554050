/** \file gamma.h
 *  Tone curves: one for luminance, one for each of the four mosaic positions, and the camera's own.
 *
 *  The position curves (index 1 to 4) act on the raw mosaic of Bayer cameras (colour arrays 2 to 5), ahead of
 *  interpolation. The luminance curve (index 0) acts on the image after it: a mono pixel is replaced by its
 *  entry; of a colour pixel with Y = 0.299 R + 0.587 G + 0.114 B (each term rounded) the difference table[Y]
 *  - Y is added to all three channels, limited to 0 to 255, so hue and saturation stay.
 *
 *  A curve in mode 1, for the input level i from 0 to 255, x = brightness + i, c = min(127, contrast):
 *
 *  - x above 255 gives 255; x below 0, or not above c, gives 0; x from 255 - c on gives 255;
 *  - else t = (x - c) * 255 / (255 - 2 c), and the entry is trunc(255 * pow(t / 255, 100 / gamma) + 0.5), at
 *    most 255.
 *
 *  Mode 2 is the same table from its end to its beginning. A change takes effect between two frames. The
 *  curve of a new camera is the identity.
 */
#ifndef TAVRA_API_GAMMA_H
#define TAVRA_API_GAMMA_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets a tone curve with brightness 0 and contrast 0.
 *
 *  \param handle camera
 *  \param index TAVRA_GAMMA_INDEX_ code
 *  \param mode TAVRA_GAMMA_ code: 0, 1, 2 or 255
 *  \param gamma gamma times 100, at least 1; used in modes 1 and 2. 100 is a straight line
 *  \param table 256 bytes, the output for each input; used in mode 255, may be null in the others
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index above 4, another mode, gamma 0 in mode 1 or 2, or no table
 *      in mode 255; nothing changes
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetGammaMode(TavraHandle handle, uint8_t index, uint8_t mode, uint16_t gamma,
                                       const uint8_t* table);

/** Reads a tone curve. In modes 0 and 255 gamma reads 100.
 *
 *  \param handle camera
 *  \param index TAVRA_GAMMA_INDEX_ code
 *  \param[out] mode TAVRA_GAMMA_ code; may be null
 *  \param[out] gamma gamma times 100; may be null
 *  \param[out] table receives 256 bytes, the curve in force; may be null
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index above 4
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetGammaMode(TavraHandle handle, uint8_t index, uint8_t* mode, uint16_t* gamma,
                                       uint8_t* table);

/** Sets a tone curve with brightness and contrast.
 *
 *  \param handle camera
 *  \param index TAVRA_GAMMA_INDEX_ code
 *  \param mode TAVRA_GAMMA_ code: 0, 1, 2 or 255
 *  \param gamma gamma times 100, at least 1; used in modes 1 and 2
 *  \param brightness levels added to the input, a signed value carried in 16 bits; used in modes 1 and 2
 *  \param contrast levels cut off at each end of the input; above 127 acts as 127; used in modes 1 and 2
 *  \param table 256 bytes; used in mode 255, may be null in the others
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index above 4, another mode, gamma 0 in mode 1 or 2, or no table
 *      in mode 255; nothing changes
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetGammaModeEx(TavraHandle handle, uint8_t index, uint8_t mode, uint16_t gamma,
                                         uint16_t brightness, uint8_t contrast, const uint8_t* table);

/** Reads a tone curve with brightness and contrast, which read 0 in modes 0 and 255.
 *
 *  \param handle camera
 *  \param index TAVRA_GAMMA_INDEX_ code
 *  \param[out] mode TAVRA_GAMMA_ code; may be null
 *  \param[out] gamma gamma times 100; may be null
 *  \param[out] brightness levels, a signed value carried in 16 bits; may be null
 *  \param[out] contrast levels; may be null
 *  \param[out] table receives 256 bytes, the curve in force; may be null
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index above 4
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetGammaModeEx(TavraHandle handle, uint8_t index, uint8_t* mode, uint16_t* gamma,
                                         uint16_t* brightness, uint8_t* contrast, uint8_t* table);

/** Reads the gamma that the camera itself applies.
 *
 *  \param handle camera
 *  \param[out] value in the camera's unit; 0 if it has none (capability word 3 bit 9)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetCameraGammaValue(TavraHandle handle, uint16_t* value);

/** Sets the gamma that the camera itself applies.
 *
 *  \param handle camera
 *  \param value in the camera's unit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has none; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetCameraGammaValue(TavraHandle handle, uint16_t value);

#ifdef __cplusplus
}
#endif
#endif
