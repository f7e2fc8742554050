/** \file stills.h
 *  Still image files: one image in memory to one file on disk.
 *
 *  The type follows from the text behind the last dot of the file name, compared without case and over its
 *  own length, so a shortened ending counts: raw, bmp, tif, tiff, jpg, jpeg, png, in this order. A name that
 *  ends in a dot is saved as raw.
 *
 *  | type | TAVRA_PIXEL_ formats | content |
 *  |---|---|---|
 *  | raw | all | width x height x bytes a pixel from the start of the data, without a header |
 *  | bmp | 1, 4, 8 | bottom-up, 8-bit with a grey palette |
 *  | tif | all | baseline, one strip, uncompressed, RGB; mono of 10, 12, 14 bits shifted up to 16 |
 *  | jpg | 1, 4, 8 | baseline JFIF, grey or YCbCr without subsampling |
 *  | png | 1, 4, 8 | grey or RGB of 8 bits |
 */
#ifndef TAVRA_API_STILLS_H
#define TAVRA_API_STILLS_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Writes an image to a file, replacing one of that name. Unlike other functions it sets the last error to 0
 *  on success.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels
 *  \param format TAVRA_PIXEL_ code
 *  \param data top row first, each row padded to a multiple of four bytes (raw: not padded). It must not
 *      change during the call
 *  \param fileName name in UTF-16
 *  \param quality png: bit 0: not interlaced; jpg: compression, from 0, the finest, to 99, the coarsest (100
 *      minus the quality that other programs ask for); 100 and more are the same as 50; else not used
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_FILE_NAME no name, no dot, or an unknown type; TAVRA_ERROR_INVALID_ARGUMENT data is
 *      null, or the type does not take the format or the size (an empty file is left behind for bmp with 256,
 *      512 or an unknown format and jpg with 2, 256 or 512); TAVRA_ERROR_OPEN_FAILED the file cannot be
 *      opened, or the system cannot express its name; TAVRA_ERROR_WRITE_FAULT it could not be written whole
 *      (raw, bmp, png; not detected for tif and jpg); TAVRA_ERROR_OUT_OF_MEMORY no memory (but bmp succeeds
 *      with an empty file)
 *  \threads any, not in a callback unless the stream may wait for the disk
 */
TAVRA_API TavraBool Tavra_SaveImageW(TavraHandle handle, uint32_t width, uint32_t height, uint32_t format,
                                     const void* data, const TavraWChar* fileName, uint32_t quality);

/** Writes an image to a file; Tavra_SaveImageW() with a name in the system code page of at most 258
 *  characters.
 *
 *  \param handle camera
 *  \param width pixels
 *  \param height pixels
 *  \param format TAVRA_PIXEL_ code
 *  \param data as Tavra_SaveImageW()
 *  \param fileName name in the system code page
 *  \param quality as Tavra_SaveImageW()
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SaveImageW()
 *  \threads as Tavra_SaveImageW()
 */
TAVRA_API TavraBool Tavra_SaveImageA(TavraHandle handle, uint32_t width, uint32_t height, uint32_t format,
                                     const void* data, const char* fileName, uint32_t quality);

#ifdef __cplusplus
}
#endif
#endif
