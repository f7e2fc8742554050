/** \file snapshot.h
 *  Taking frames one at a time, and looking at a pixel of the preview.
 */
#ifndef TAVRA_API_SNAPSHOT_H
#define TAVRA_API_SNAPSHOT_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Waits for the next frames and copies them as the camera sent them.
 *
 *  As many whole frames are taken as fit into the buffer. If no stream runs, one is started for it and
 *  stopped afterwards; if one runs, the snapshot takes its next frames and disturbs nothing.
 *
 *  \param handle camera
 *  \param[out] buffer receives the frames one after another, each of Tavra_GetRawDataSize() bytes
 *  \param size bytes at buffer, at least one frame
 *  \param[out] bytesWritten receives the bytes copied; written on success only
 *  \param[out] frameNumbers receives the frame number of each frame that fits into size; may be null
 *  \param timeoutMs milliseconds to wait for all of them; 0: without limit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT size is less than one frame; TAVRA_ERROR_TIMEOUT the time ran out, or
 *      the stream ended first: frames already copied are in buffer; the operating system's code if no stream
 *      could be started
 *  \threads any, not in a callback. One raw snapshot of a camera at a time: serialise
 */
TAVRA_API TavraBool Tavra_TakeRawSnapShot(TavraHandle handle, void* buffer, uint32_t size,
                                          uint32_t* bytesWritten, uint32_t* frameNumbers, uint32_t timeoutMs);

/** Waits for the next preview images and copies them; otherwise as Tavra_TakeRawSnapShot().
 *
 *  \param handle camera
 *  \param[out] buffer receives the images one after another, each of the size that Tavra_GetPreviewDataSize()
 *      gives in total
 *  \param size bytes at buffer, at least one image
 *  \param[out] bytesWritten receives the bytes copied; written on success only
 *  \param[out] frameNumbers receives the frame number of each image that fits into size; may be null
 *  \param timeoutMs milliseconds to wait for all of them; 0: without limit
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_TakeRawSnapShot()
 *  \threads any, not in a callback. One preview snapshot of a camera at a time: serialise
 */
TAVRA_API TavraBool Tavra_TakePreviewSnapShot(TavraHandle handle, void* buffer, uint32_t size,
                                              uint32_t* bytesWritten, uint32_t* frameNumbers,
                                              uint32_t timeoutMs);

/** Reads a pixel of the newest published preview image. Only images that are shown or drawn on are published:
 *  it needs a preview window or a preview GDI callback.
 *
 *  \param handle camera
 *  \param x column, from 0
 *  \param y row, from 0
 *  \param[out] value 0x00BBGGRR: blue in bits 16 to 23, green in bits 8 to 15, red in bits 0 to 7; a grey
 *      byte three times for 8 bits; 0 outside the image
 *  \return 1
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewImagePixelValue(TavraHandle handle, uint32_t x, uint32_t y,
                                                    uint32_t* value);

#ifdef __cplusplus
}
#endif
#endif
