/** \file defect.h
 *  Defect pixels: a list in the camera, which replaces them as it reads out.
 *
 *  A camera has the correction if capability word 3 bit 11 is set. List and mode live in the camera. A
 *  position of 65535, 65535 is a free entry.
 */
#ifndef TAVRA_API_DEFECT_H
#define TAVRA_API_DEFECT_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Finds bright pixels in an image taken with the lens capped, and writes them to the camera's list.
 *
 *  The pixels at or above the threshold are taken in the order of rows; when the list is full, a brighter one
 *  takes the place of the first of the dimmest. Entries that stay free are cleared, so an all-dark image
 *  clears the list.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels
 *  \param image width x height bytes, rows dense, 8 bits a pixel, for example a raw snapshot
 *  \param threshold level, 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no correction; TAVRA_ERROR_OUT_OF_MEMORY no memory;
 *      TAVRA_ERROR_CONTROL_TRANSFER a write failed, entries before it are written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_DetectDefectPixel(TavraHandle handle, uint32_t width, uint32_t height,
                                            const uint8_t* image, uint16_t threshold);

/** Reads the length of the camera's list.
 *
 *  \param handle camera
 *  \param[out] count positions; 0 if the camera has no correction
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableDefectPixelCorrectionCount(TavraHandle handle, uint16_t* count);

/** Turns the correction on or off.
 *
 *  \param handle camera
 *  \param mode a code of the camera; 0: off
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no correction; TAVRA_ERROR_CONTROL_TRANSFER the
 *      request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDefectPixelCorrectionMode(TavraHandle handle, uint16_t mode);

/** Reads whether the correction is on.
 *
 *  \param handle camera
 *  \param[out] mode a code of the camera; 0: off, or no correction
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefectPixelCorrectionMode(TavraHandle handle, uint16_t* mode);

/** Writes one entry of the list.
 *
 *  \param handle camera
 *  \param index entry, below the length of the list
 *  \param x column, 0 to 65535
 *  \param y row, 0 to 65535
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index not below the length; TAVRA_ERROR_CONTROL_TRANSFER the request
 *      failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t x,
                                                           uint32_t y);

/** Reads one entry of the list.
 *
 *  \param handle camera
 *  \param index entry, below the length of the list
 *  \param[out] x column; 65535: free
 *  \param[out] y row; 65535: free
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index not below the length; TAVRA_ERROR_CONTROL_TRANSFER the request
 *      failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t* x,
                                                           uint32_t* y);

#ifdef __cplusplus
}
#endif
#endif
