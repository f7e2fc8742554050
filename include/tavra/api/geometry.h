/** \file geometry.h
 *  What part of the sensor is read out, and the formats and sizes of frames and images.
 *
 *  Every change goes to the camera, is read back, and all sizes that follow from it are rebuilt: frame
 *  buffers, image buffers, preview mask and destination (both become the whole image, except by
 *  Tavra_SetROI(), which leaves them), exposure limits. That needs a stopped stream; Tavra_GetRawDataSize()
 *  and Tavra_GetPreviewDataSize() tell the sizes of the next run. Coordinates are sensor pixels, and the
 *  steps and limits of positions and sizes are the camera's: read back what it made of a request.
 *
 *  With two and more regions of interest in use, raw callbacks and raw snapshots get what the camera sends:
 *  the regions one after another, each with dense rows, or packed into a grid by the camera. For the preview
 *  and for measuring they are composed: each region lands at its place in a canvas from which all rows and
 *  columns that no region covers are removed; what no region covers inside it is 0, and of regions that
 *  overlap the later one is seen. Image sizes are then those of the canvas. A region that is empty in width
 *  or height counts as not in use. A frame that is too short for all of its regions lacks those that do not
 *  fit.
 */
#ifndef TAVRA_API_GEOMETRY_H
#define TAVRA_API_GEOMETRY_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Reads the scan mode and the main image region.
 *
 *  \param handle camera
 *  \param reserved not used, 0
 *  \param[out] mode scan mode, a code of the camera
 *  \param[out] x left edge, pixels
 *  \param[out] y top edge, pixels
 *  \param[out] width pixels
 *  \param[out] height pixels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetImageSize(TavraHandle handle, uint32_t reserved, uint16_t* mode, uint32_t* x,
                                       uint32_t* y, uint32_t* width, uint32_t* height);

/** Sets the scan mode and the main image region.
 *
 *  On the product types 2326, 3448, 4118 and 16385 to 16388 clock and transfer bits are read again as well,
 *  for these cameras change them with the image size.
 *
 *  \param handle camera
 *  \param reserved not used, 0
 *  \param mode scan mode, a code of the camera
 *  \param x left edge, pixels
 *  \param y top edge, pixels
 *  \param width pixels
 *  \param height pixels
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_CONTROL_TRANSFER the camera did not take
 *      the change, or did not answer when it was read back; TAVRA_ERROR_OUT_OF_MEMORY no memory for the image
 *      buffers
 *  \threads any, not in a callback
 */
TAVRA_API TavraBool Tavra_SetImageSize(TavraHandle handle, uint32_t reserved, uint16_t mode, uint32_t x,
                                       uint32_t y, uint32_t width, uint32_t height);

/** Reads the sensor's size.
 *
 *  \param handle camera
 *  \param[out] width pixels
 *  \param[out] height pixels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaximumImageSize(TavraHandle handle, uint32_t* width, uint32_t* height);

/** Reads how many regions of interest the camera offers.
 *
 *  \param handle camera
 *  \param[out] count 1 to 32
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxROICount(TavraHandle handle, uint32_t* count);

/** Reads one region of interest. Region 0 is the main image region.
 *
 *  \param handle camera
 *  \param index region, below Tavra_GetMaxROICount()
 *  \param[out] enabled 1: in use; may be null
 *  \param[out] x left edge, pixels; may be null
 *  \param[out] y top edge, pixels; may be null
 *  \param[out] width pixels; may be null
 *  \param[out] height pixels; may be null
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no such region
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetROI(TavraHandle handle, uint32_t index, uint32_t* enabled, uint32_t* x,
                                 uint32_t* y, uint32_t* width, uint32_t* height);

/** Sets one region of interest. Region 0 sets the main image region.
 *
 *  \param handle camera
 *  \param index region, below Tavra_GetMaxROICount()
 *  \param enabled 1: in use, 0: not
 *  \param x left edge, pixels
 *  \param y top edge, pixels
 *  \param width pixels
 *  \param height pixels
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no such region, or enabled above 1, nothing is sent;
 *      TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_OUT_OF_MEMORY
 *      as Tavra_SetImageSize()
 *  \threads any, not in a callback
 */
TAVRA_API TavraBool Tavra_SetROI(TavraHandle handle, uint32_t index, uint32_t enabled, uint32_t x, uint32_t y,
                                 uint32_t width, uint32_t height);

/** Reads the skipping and binning factors.
 *
 *  A camera that cannot set them (bit 15 of the scan mode mask of Tavra_GetEnableImageSize() clear) gives
 *  hSkipping and hBinning 0, and vSkipping and vBinning 1 in the scan modes 16, 32, 64, 128 and 256, else 0.
 *
 *  \param handle camera
 *  \param[out] hSkipping horizontal skipping, 0 to 15; 0: none
 *  \param[out] vSkipping vertical skipping, 0 to 15
 *  \param[out] hBinning horizontal binning, 0 to 15; 0: none
 *  \param[out] vBinning vertical binning, 0 to 15
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the transfer failed; TAVRA_ERROR_LEGACY_CAMERA one of the oldest
 *      types with the bit set
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSkippingAndBinning(TavraHandle handle, uint8_t* hSkipping, uint8_t* vSkipping,
                                                uint8_t* hBinning, uint8_t* vBinning);

/** Sets the skipping and binning factors and takes over the geometry that follows from them.
 *
 *  \param handle camera
 *  \param hSkipping horizontal skipping, 0 to 15; only the low four bits travel
 *  \param vSkipping vertical skipping, likewise
 *  \param hBinning horizontal binning, likewise
 *  \param vBinning vertical binning, likewise
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera cannot set them; TAVRA_ERROR_TRANSFER_RUNNING the stream
 *      runs; TAVRA_ERROR_CONTROL_TRANSFER a transfer failed; TAVRA_ERROR_LEGACY_CAMERA one of the oldest
 *      types with the bit set; TAVRA_ERROR_OUT_OF_MEMORY no memory for the image buffers
 *  \threads any, not in a callback
 */
TAVRA_API TavraBool Tavra_SetSkippingAndBinning(TavraHandle handle, uint8_t hSkipping, uint8_t vSkipping,
                                                uint8_t hBinning, uint8_t vBinning);

/** Reads whether binned pixels are summed or averaged.
 *
 *  \param handle camera
 *  \param[out] mode a code of the camera; 0 if it has no such mode
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the transfer failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetBinningSumMode(TavraHandle handle, uint16_t* mode);

/** Sets whether binned pixels are summed or averaged.
 *
 *  \param handle camera
 *  \param mode a code of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no such mode (capability word 3 bit 13 and function
 *      131 both absent); TAVRA_ERROR_CONTROL_TRANSFER the transfer failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetBinningSumMode(TavraHandle handle, uint16_t mode);

/** Reads the size of a raw frame, as raw callbacks and raw snapshots deliver it.
 *
 *  Width times height times the bits of the transfer format, divided by 8, unless the camera tells its frame
 *  size itself.
 *
 *  \param handle camera
 *  \param[out] size bytes; may be null
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetRawDataSize(TavraHandle handle, uint32_t* size);

/** Reads the size of a preview image, as preview callbacks and snapshots deliver it. Width and height are
 *  exchanged while a rotation is set.
 *
 *  \param handle camera
 *  \param[out] total bytes: lineBytes times height; may be null
 *  \param[out] width pixels; may be null
 *  \param[out] height pixels; may be null
 *  \param[out] lineBytes bytes a row: width times bytes a pixel, rounded up to a multiple of four; may be
 *      null
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewDataSize(TavraHandle handle, uint32_t* total, uint32_t* width,
                                             uint32_t* height, uint32_t* lineBytes);

/** Sets the pixel format of preview images and rebuilds the image buffers.
 *
 *  \param handle camera
 *  \param format TAVRA_PIXEL_MONO_8 (mono-like cameras only), TAVRA_PIXEL_BGR_24 or TAVRA_PIXEL_BGR_32
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT not in the mask of Tavra_GetEnablePreviewPixelFormat();
 *      TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_OUT_OF_MEMORY no memory for the image
 *      buffers
 *  \threads any, not in a callback
 */
TAVRA_API TavraBool Tavra_SetPreviewPixelFormat(TavraHandle handle, uint32_t format);

/** Reads the pixel format of preview images.
 *
 *  \param handle camera
 *  \param[out] format TAVRA_PIXEL_ code: 1, 4 or 8
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewPixelFormat(TavraHandle handle, uint32_t* format);

/** Sets what the camera sends, and rebuilds all sizes.
 *
 *  On a camera that knows one format only (mask 1) any code succeeds without effect.
 *
 *  \param handle camera
 *  \param code TAVRA_TRANSFER_ code
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT not in the mask of Tavra_GetEnableTransferBitsPerPixel();
 *      TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_CONTROL_TRANSFER the camera did not take the
 *      change; TAVRA_ERROR_OUT_OF_MEMORY no memory for the image buffers
 *  \threads any, not in a callback
 */
TAVRA_API TavraBool Tavra_SetTransferBitsPerPixel(TavraHandle handle, uint32_t code);

/** Reads what the camera sends.
 *
 *  \param handle camera
 *  \param[out] code TAVRA_TRANSFER_ code; 1 on a camera that knows one format only
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed; a camera that knows one format only is not asked
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTransferBitsPerPixel(TavraHandle handle, uint32_t* code);

#ifdef __cplusplus
}
#endif
#endif
