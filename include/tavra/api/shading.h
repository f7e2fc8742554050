/** \file shading.h
 *  Shading correction: flattening the response of sensor and lens, pixel by pixel.
 *
 *  Point the camera at a flat field, set a calibration mode and let at least one frame pass, then set the
 *  correction mode: the map is made from the frames of the calibration on the next frame. It stays until the
 *  next calibration or Tavra_SetShadingCorrectionMap(). Since each calibration frame starts the mean anew on
 *  a camera's stream, the map is made from the last one. Frames pass the stage only while there is a preview
 *  consumer. A map that is set between calibration and correction takes the calibration's place if it has
 *  another size or stride; one of the same size is replaced by what was calibrated.
 *
 *  The stage acts on raw frames, reduced to 8 bits, ahead of interpolation. A map whose size is not that of
 *  the frame does nothing and tells nothing.
 *
 *  - TAVRA_SHADING_GAIN: an entry of the map is a gain, 128 is 1.0: trunc((target << 7) / mean), and 2048
 *    where the mean is not above trunc(target / 16). A sample v becomes min(255, (v * entry) >> 7), with an
 *    entry below 0 taken as a very large one.
 *  - TAVRA_SHADING_OFFSET: an entry is a signed difference, target - trunc(mean). A sample v becomes v +
 *    entry, limited to 0 to 255.
 *  - TAVRA_SHADING_SHOW_MAP: a sample becomes the entry, or 255 if that is not from 0 to 254.
 */
#ifndef TAVRA_API_SHADING_H
#define TAVRA_API_SHADING_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the mode, and takes over the colour array in force. Setting a calibration mode starts the calibration
 *  anew.
 *
 *  \param handle camera
 *  \param mode TAVRA_SHADING_ code; another acts as off
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits for a frame in work
 */
TAVRA_API TavraBool Tavra_SetShadingCorrectionMode(TavraHandle handle, uint32_t mode);

/** Reads the mode.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_SHADING_ code; may be null
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits for a frame in work
 */
TAVRA_API TavraBool Tavra_GetShadingCorrectionMode(TavraHandle handle, uint32_t* mode);

/** Sets the level that a flat field is to have after correction, for all four mosaic positions.
 *
 *  \param handle camera
 *  \param target level; 0: the mean of the middle of the image (a centred square, a quarter of the smaller
 *      side long), on a colour camera that of each mosaic position, on a mono-like one that of all together
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetShadingCorrectionTarget(TavraHandle handle, uint16_t target);

/** Reads the target: the mean of the four mosaic positions.
 *
 *  \param handle camera
 *  \param[out] target level
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShadingCorrectionTarget(TavraHandle handle, uint16_t* target);

/** Sets a map, for example one that was read before. It is copied.
 *
 *  \param handle camera
 *  \param width pixels, that of the raw frame
 *  \param height pixels, that of the raw frame
 *  \param stride bytes a row, at least 4 x width
 *  \param data height x stride bytes, one int32_t a pixel, in any row from its start
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT a stride below 4 x width, or data is null; TAVRA_ERROR_OUT_OF_MEMORY
 *      no memory; the map there was stays
 *  \threads any; waits for a frame in work
 */
TAVRA_API TavraBool Tavra_SetShadingCorrectionMap(TavraHandle handle, uint32_t width, uint32_t height,
                                                  uint32_t stride, const void* data);

/** Reads the map: ask for the sizes with data null first.
 *
 *  \param handle camera
 *  \param[out] width pixels; 0 if there is no map; may be null
 *  \param[out] height pixels; may be null
 *  \param[out] stride bytes a row; may be null
 *  \param[out] data receives height x stride bytes, one int32_t a pixel, if there is a map; may be null
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits for a frame in work
 */
TAVRA_API TavraBool Tavra_GetShadingCorrectionMap(TavraHandle handle, uint32_t* width, uint32_t* height,
                                                  uint32_t* stride, void* data);

#ifdef __cplusplus
}
#endif
#endif
