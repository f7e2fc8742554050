/** \file mirror.h
 *  Mirror and rotation.
 *
 *  Two mirror bits are done in the library, two by the camera where it can. Raw callbacks and raw snapshots
 *  see the camera's part only. On a mosaic both change the colour array: Tavra_GetColorArray() follows the
 *  camera's part, the chain inside follows both. Rotation is a quarter turn and exchanges width and height of
 *  all that comes after. Both modes stay while the stream is stopped and started again.
 *
 *  A horizontal mirror exchanges the colour arrays 2 and 3, and 4 and 5; a vertical one 2 and 4, and 3 and 5;
 *  so do the codes 12 to 15 and 16 to 19 among themselves. The code does not follow mirroring in the camera
 *  for colour array 1 and with function 71, and on the product types 2326, 3448, 4118 and 16385 to 16388 not
 *  its vertical mirror.
 */
#ifndef TAVRA_API_MIRROR_H
#define TAVRA_API_MIRROR_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the mirror mode. The library's bits take effect with the next frame, the camera's when it takes them
 *  over.
 *
 *  \param handle camera
 *  \param mode TAVRA_MIRROR_ bits
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT a bit outside the mask of Tavra_GetEnableMirrorMode(), nothing
 *      changes; TAVRA_ERROR_CONTROL_TRANSFER the camera did not take its bits (on a camera with a mirror of
 *      its own these are sent with every mode), which are stored all the same
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetMirrorMode(TavraHandle handle, uint8_t mode);

/** Reads the mirror mode. At open the camera's bits are read from the camera.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_MIRROR_ bits
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMirrorMode(TavraHandle handle, uint8_t* mode);

/** Reads which bits Tavra_SetMirrorMode() takes.
 *
 *  \param handle camera
 *  \param[out] mask 3, plus 16 (capability word 1 bit 6), plus 32 (bit 7); 3 on the oldest types
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableMirrorMode(TavraHandle handle, uint8_t* mask);

/** Sets the rotation, and rebuilds what follows from the size of the image: preview mask and destination
 *  become the whole image.
 *
 *  With mirroring the image is mirrored first and turned then.
 *
 *  \param handle camera
 *  \param mode TAVRA_ROTATION_ code; another is stored and acts as none on the pixels
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_RECORDING a recording exists; TAVRA_ERROR_CONTROL_TRANSFER the geometry could not be
 *      read again
 *  \threads any, not in a callback; best while the stream is stopped
 */
TAVRA_API TavraBool Tavra_SetRotationMode(TavraHandle handle, uint8_t mode);

/** Reads the rotation.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_ROTATION_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetRotationMode(TavraHandle handle, uint8_t* mode);

#ifdef __cplusplus
}
#endif
#endif
