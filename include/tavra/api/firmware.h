/** \file firmware.h
 *  Firmware of the oldest cameras, and reviving a USB bus.
 */
#ifndef TAVRA_API_FIRMWARE_H
#define TAVRA_API_FIRMWARE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Opens a camera as Tavra_Open() does, and loads firmware into one of the oldest types (773, 1541, 1797,
 *  2053) that came up without.
 *
 *  Such a camera reports firmware revision 8. It gets the image for its type, is closed and opened again,
 *  until it reports another revision. A load that keeps failing repeats without end; another thread sees its
 *  code in the global last error. A loaded camera leaves the bus for a moment: where it is not back at once,
 *  the result is null with a count of 1 or more, and the camera can be opened a little later.
 *
 *  The image is Intel HEX text of less than 86016 bytes for a memory of 16384 bytes: the file `<type>.hex` in
 *  the folder that the environment variable TAVRA_FIRMWARE_DIR names; else, on Linux, in share/tavra/firmware
 *  of the library's installation, on Windows the resource of the library.
 *
 *  \param userId as for Tavra_Open()
 *  \param[out] count number of loads that worked; 0 if the camera could not be opened or needed none
 *  \return camera handle, or null
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT count is null; those of Tavra_Open(). A failed load leaves its code
 *      in the global last error, with whatever handle there is: TAVRA_ERROR_OUT_OF_MEMORY no memory, or the
 *      text is too long; else a code of the operating system, for example 2 no image, 13 no Intel HEX, 31
 *      refused by the camera
 *  \threads any, not in a callback
 */
TAVRA_API TavraHandle Tavra_OpenFW(uint32_t userId, uint32_t* count);

/** Restarts every high-speed USB root hub of the machine, and no other, to recover a bus that has lost a
 *  camera.
 *
 *  All devices on these hubs are lost for a moment, open cameras among them: their streams end with
 *  TAVRA_ERROR_DEVICE_GONE. It blocks for as long as the system takes, and needs the right to do this to the
 *  system: on Linux that of root. There a hub that is not authorised stays so, unless an earlier reset left
 *  it.
 *
 *  \return 1, also if there is no such hub; 0 on failure. On Windows a hub that refuses is no failure
 *  \errors the operating system's code, in the global last error; 5 without the right
 *  \threads any, not in a callback
 */
TAVRA_API uint32_t Tavra_ResetRootHub(void);

#ifdef __cplusplus
}
#endif
#endif
