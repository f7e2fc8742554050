/** \file open.h
 *  Finding, opening and closing cameras; the last error; the receiver of messages.
 *
 *  A camera is protected against a second opener, in this process or another: an open camera is in use.
 */
#ifndef TAVRA_API_OPEN_H
#define TAVRA_API_OPEN_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Opens a camera by the user ID that is stored in it.
 *
 *  The first 127 devices are looked at in the order of their enumeration, and the first free camera whose
 *  stored user ID (Tavra_WriteCameraUserIDA()) equals the argument is opened. If cameras were seen but none
 *  has the ID, an ID other than 0 is tried as an enumeration index, and after that the first free camera is
 *  taken. So Tavra_Open(0) opens a camera with ID 0 or, if there is none, the first free one.
 *
 *  Opening reads the camera's identity, capabilities, scan geometry, clock and exposure, sets camera mode 0
 *  and the default preview pixel format (1 for a mono-like colour array, else 4), and makes the image
 *  buffers. Nothing streams yet.
 *
 *  \param userId ID stored in the camera, or an enumeration index above 0
 *  \return camera handle, to be given back with Tavra_Close(); null on failure, the reason is
 *      `Tavra_GetLastError(NULL)`
 *  \errors TAVRA_ERROR_NO_CAMERA no camera found; TAVRA_ERROR_IN_USE cameras exist, all are in use;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not answer a request or answered short;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory; TAVRA_ERROR_MODULE_NOT_FOUND, TAVRA_ERROR_OPERATION_NOT_FOUND the
 *      USB access library is missing or too old; or a code of the operating system
 *  \threads any; two threads that open at the same time see each other's cameras as in use
 */
TAVRA_API TavraHandle Tavra_Open(uint32_t userId);

/** Opens the camera at a device path, as Tavra_GetDevicePathA() gives it.
 *
 *  The user ID plays no part and there is no fallback to another camera.
 *
 *  \param path device path in the system code page
 *  \return as Tavra_Open()
 *  \errors as Tavra_Open(); TAVRA_ERROR_IN_USE if the device answered as in use, TAVRA_ERROR_NO_CAMERA in
 *      every other case of a device that does not open
 *  \threads as Tavra_Open()
 */
TAVRA_API TavraHandle Tavra_OpenByDevicePathA(const char* path);

/** Opens the camera at a device path; Tavra_OpenByDevicePathA() with wide text.
 *
 *  \param path device path in UTF-16
 *  \return as Tavra_Open()
 *  \errors as Tavra_OpenByDevicePathA()
 *  \threads as Tavra_Open()
 */
TAVRA_API TavraHandle Tavra_OpenByDevicePathW(const TavraWChar* path);

/** Ends everything of a camera and closes it.
 *
 *  Stops the stream and waits for its end, ends a recording, destroys the preview window, removes all
 *  callbacks, sets camera mode 1 and frees the handle. The handle is invalid from then on; using it again is
 *  undefined. A camera that was unplugged is closed like any other.
 *
 *  \param handle camera; null stores TAVRA_ERROR_INVALID_HANDLE in the global last error and nothing else
 *      happens
 *  \errors none of its own
 *  \threads any, but never beside another call on the handle, not in a callback; with a preview window its
 *      thread (on Windows another one waits until that is out of the message that it is in)
 */
TAVRA_API void Tavra_Close(TavraHandle handle);

/** Counts the cameras that are present and can be opened at the USB level, cameras in use by this process
 *  included where the system lets them be opened twice. Sets no error.
 *
 *  The count ends at the first enumeration index that does not open.
 *
 *  \return number of cameras, 0 to 127
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API uint32_t Tavra_CameraCount(void);

/** Reads the code of the last failure.
 *
 *  A failure stores its code, a success leaves the code as it is: ask only after a failure. The code belongs
 *  to the handle and not to a thread, so of two threads that fail on one handle each may read the other's
 *  code.
 *
 *  \param handle camera; null: the global last error, which holds failures without a usable handle (a null
 *      handle, a failed open, Tavra_ResetRootHub())
 *  \return TAVRA_ERROR_ code, or a code of the operating system; 0: no failure yet. A closed handle that is
 *      still an object gives its own code
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API uint32_t Tavra_GetLastError(TavraHandle handle);

/** Reads the device path that the camera was opened by, in UTF-16.
 *
 *  \param handle camera
 *  \param[out] path receives the path with its terminating zero; may be null to ask for the size
 *  \param[in,out] size in: bytes at path (not read if path is null); out: bytes needed, two a character,
 *      terminator included
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT size is null, or with a path too small, in which case size receives
 *      the need
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDevicePathW(TavraHandle handle, TavraWChar* path, uint32_t* size);

/** Reads the device path that the camera was opened by, in the system code page.
 *
 *  \param handle camera
 *  \param[out] path receives the path with its terminating zero; may be null to ask for the size
 *  \param[in,out] size in: bytes at path; out, if path is null: characters needed, terminator included
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT size is null, or the path has 1024 characters or more; the operating
 *      system's code if the text does not convert or does not fit
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDevicePathA(TavraHandle handle, char* path, uint32_t* size);

/** Sets who receives the camera's messages (TAVRA_MESSAGE_).
 *
 *  Messages are posted and never waited for. On Linux the window is a receiver of TavraHost_CreateReceiver()
 *  or an X11 window (its XID, cast to a pointer), on Windows an HWND. It can be set or changed at any time; a
 *  message goes to the receiver of the moment.
 *
 *  | message | second parameter | when |
 *  |---|---|---|
 *  | TAVRA_MESSAGE_TRANSFER_STARTED | 0 | the capture thread is ready, before the first frame |
 *  | TAVRA_MESSAGE_TRANSFER_ENDED | end code: 0 or an error | last act of the capture thread |
 *  | TAVRA_MESSAGE_WINDOW_CREATED | window | preview window and its drawing exist |
 *  | TAVRA_MESSAGE_WINDOW_CLOSED | last drawing error, 0 if none | preview window gone, or not created |
 *  | TAVRA_MESSAGE_WINDOW_SIZED | 0 | its client size changed |
 *  | TAVRA_MESSAGE_MASK_CHANGED | 0 | preview mask changed |
 *  | TAVRA_MESSAGE_DESTINATION_CHANGED | 0 | preview destination changed |
 *  | TAVRA_MESSAGE_RECORDING_PROGRESS | 0 | first file of a recording open |
 *  | TAVRA_MESSAGE_RECORDING_ENDED | 0 or an error | writer of a recording ended |
 *  | TAVRA_MESSAGE_WINDOW_COMMAND | the command's own | menu or control of the preview window |
 *  | TAVRA_MESSAGE_FRAME_FINISHED | frame number | a preview image was published |
 *
 *  \param handle camera
 *  \param window receiver; null: nobody. Not checked: a window that does not take the first message ends the
 *      stream that sends it. An X11 window (Linux, see tavra_host.h) has to exist already; the
 *      call waits for the X server
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetReceiveMsgWindow(TavraHandle handle, TavraWindow window);

#ifdef __cplusplus
}
#endif
#endif
