/** \file defect.h
 *  Defect pixels: a list in the camera, which replaces them as it reads out.
 *
 *  A camera has the correction if capability word 3 bit 11 is set; the oldest types (773, 1541, 1797, 2053)
 *  never have it. List and mode live in the camera, in its register pages or its status words, beyond the
 *  close of the handle. A position of 65535, 65535 is a free entry.
 *  Positions are column and row of the image in which the defect was found, from 0.
 */
#ifndef TAVRA_API_DEFECT_H
#define TAVRA_API_DEFECT_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Finds bright pixels in an image taken with the lens capped, and writes them to the camera's list.
 *
 *  The pixels at or above the threshold are taken in the order of rows; when the list is full, one that is
 *  brighter than the dimmest of the list is appended, and the first of the dimmest goes. Entries that stay
 *  free are cleared, so an all-dark image clears the list. At the end the camera is told to take the list
 *  over; the result is the result of that alone. Does not switch the correction on.
 *
 *  \param handle camera
 *  \param width pixels; 0 counts as an all-dark image
 *  \param height pixels; 0 likewise
 *  \param image width x height bytes, rows dense, 8 bits a pixel, for example a raw snapshot; may be null if
 *      it has no pixels
 *  \param threshold level, 0 to 255; a larger one finds nothing
 *  \return 1, or 0 with the last error set. 1 with a new last error: an entry could not be written, those
 *      before it were and are taken over, the rest of the camera's list is as it was
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no correction, or no image, nothing is written;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory, nothing is written; TAVRA_ERROR_CONTROL_TRANSFER the camera did
 *      not take the list over
 *  \threads any
 */
TAVRA_API TavraBool Tavra_DetectDefectPixel(TavraHandle handle, uint32_t width, uint32_t height,
                                            const uint8_t* image, uint16_t threshold);

/** Reads the length of the camera's list.
 *
 *  \param handle camera
 *  \param[out] count positions, 1 to 65535; 0 if the camera has no correction
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT count is null
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
 *  \return 1, or 0 with the last error set and mode unchanged
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT mode is null; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefectPixelCorrectionMode(TavraHandle handle, uint16_t* mode);

/** Writes one entry of the list. 65535, 65535 frees it.
 *
 *  \param handle camera
 *  \param index entry, below Tavra_GetEnableDefectPixelCorrectionCount()
 *  \param x column, 0 to 65535; of more only the lower 16 bits are sent
 *  \param y row, likewise
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT index not below the length (0 on a camera without the correction), or
 *      an entry behind the end of the camera's register page; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t x,
                                                           uint32_t y);

/** Reads one entry of the list.
 *
 *  \param handle camera
 *  \param index entry, below Tavra_GetEnableDefectPixelCorrectionCount()
 *  \param[out] x column, 0 to 65535; 65535 in both: free
 *  \param[out] y row, likewise
 *  \return 1, or 0 with the last error set and both unchanged
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT x or y is null, or as Tavra_SetDefectPixelCorrectionPosition();
 *      TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t* x,
                                                           uint32_t* y);

#ifdef __cplusplus
}
#endif
#endif
