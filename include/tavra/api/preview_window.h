/** \file preview_window.h
 *  The preview window: a window of the library that shows the camera's preview images.
 *
 *  A camera has at most one preview window, plain or a child of a window of the application. It shows the
 *  newest preview image, at most one a 33 ms, scrolls, zooms with the mouse and forwards mouse messages to
 *  its parent. On Windows it belongs to the thread that creates it, which must pump messages; elsewhere to a
 *  thread of the library, and nothing need be pumped. Closing and painting happen on that thread. If the user
 *  closes it, the stream goes on, and TAVRA_MESSAGE_WINDOW_CLOSED tells.
 *
 *  The mask is the part of the image that is shown, the destination the place in the client area where it
 *  lands; both are in pixels. The mask is scaled onto the destination. Without a window, mask and destination
 *  are only stored; a window recomputes the destination from the aspect mode whenever its client size
 *  changes.
 */
#ifndef TAVRA_API_PREVIEW_WINDOW_H
#define TAVRA_API_PREVIEW_WINDOW_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Creates the preview window. One that exists is destroyed first. The back-end that draws is that of the
 *  display mode (Tavra_SetDisplayMode()); there is no fallback to another one.
 *
 *  \param handle camera
 *  \param name title in UTF-16; may be null: empty
 *  \param style window style bits as on Windows: bit 20 horizontal and bit 21 vertical scroll bar where
 *      needed, bit 28 visible, bit 30 child window
 *  \param x position of the window, pixels: in the parent's client area for a child, else on the screen
 *  \param y position, likewise
 *  \param width width of the client area, pixels
 *  \param height height of the client area, pixels; if both are 0 the image size is taken. Unless the window
 *      is a child it is limited to the work area of the desktop
 *  \param parent parent or owner; may be null
 *  \param menu menu, may be null; Windows only
 *  \param closable not 0: with a close button
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's or the back-end's code, and no window: 1459 there is no X server, 1400 the
 *      parent is no window, 1406 a child without a parent, 126 the libraries of the display mode are
 *      missing; TAVRA_MESSAGE_WINDOW_CLOSED is posted as well, but with 1459, if none came about. As
 *      Tavra_DestroyPreviewWindow() if there is a window already, which stays
 *  \threads the thread that is to own the window, not in a callback
 */
TAVRA_API TavraBool Tavra_CreatePreviewWindowW(TavraHandle handle, const TavraWChar* name, uint32_t style,
                                               uint32_t x, uint32_t y, uint32_t width, uint32_t height,
                                               TavraWindow parent, TavraMenu menu, TavraBool closable);

/** Creates the preview window; Tavra_CreatePreviewWindowW() with a title in the system code page.
 *
 *  \param handle camera
 *  \param name title
 *  \param style window style bits
 *  \param x position, pixels
 *  \param y position, pixels
 *  \param width width of the client area, pixels
 *  \param height height of the client area, pixels
 *  \param parent parent or owner; may be null
 *  \param menu menu, may be null; Windows only
 *  \param closable not 0: with a close button
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_CreatePreviewWindowW(); TAVRA_ERROR_OUT_OF_MEMORY no memory for the title
 *  \threads as Tavra_CreatePreviewWindowW()
 */
TAVRA_API TavraBool Tavra_CreatePreviewWindowA(TavraHandle handle, const char* name, uint32_t style,
                                               uint32_t x, uint32_t y, uint32_t width, uint32_t height,
                                               TavraWindow parent, TavraMenu menu, TavraBool closable);

/** Destroys the preview window.
 *
 *  \param handle camera
 *  \return 1, also if there is none; 0 on failure
 *  \errors the operating system's code; Windows, on another thread than the window's: 1460 that thread is in
 *      the middle of one of the window's messages and has not come out of it within five seconds, the window
 *      stays
 *  \threads the thread that owns the window, not in a callback
 */
TAVRA_API TavraBool Tavra_DestroyPreviewWindow(TavraHandle handle);

/** Reads the preview window's handle. A window that the user closed keeps its handle here until the next
 *  creation or destruction.
 *
 *  \param handle camera
 *  \param[out] window receives the window (HWND or XID)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW no window was created; window is null then
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewWnd(TavraHandle handle, TavraWindow* window);

/** Sets the title.
 *
 *  \param handle camera
 *  \param name title in the system code page
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewWindowNameA(TavraHandle handle, const char* name);

/** Sets the title.
 *
 *  \param handle camera
 *  \param name title in UTF-16
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewWindowNameW(TavraHandle handle, const TavraWChar* name);

/** Reads the title, cut to the buffer. Of a window that the user closed nothing is read.
 *
 *  \param handle camera
 *  \param[out] name receives the title in the system code page, zero-terminated
 *  \param size characters at name, the terminating zero included
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewWindowNameA(TavraHandle handle, char* name, uint32_t size);

/** Reads the title, cut to the buffer. Of a window that the user closed nothing is read.
 *
 *  \param handle camera
 *  \param[out] name receives the title in UTF-16, zero-terminated
 *  \param size characters at name, the terminating zero included
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewWindowNameW(TavraHandle handle, TavraWChar* name, uint32_t size);

/** Sets the window's style and redraws its frame.
 *
 *  \param handle camera
 *  \param style window style bits, as Tavra_CreatePreviewWindowW()
 *  \return 1 if there is a window; the stored style changes also if the system refuses it, which then leaves
 *      its code as last error
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewWindowStyle(TavraHandle handle, uint32_t style);

/** Reads the window's style as it was last set; of a window that is gone, its last style.
 *
 *  \param handle camera
 *  \param[out] style window style bits
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewWindowStyle(TavraHandle handle, uint32_t* style);

/** Moves the window and sets its client size.
 *
 *  \param handle camera
 *  \param x position, pixels, a signed value carried in 32 bits: in the parent's client area for a child with
 *      a parent, else on the screen
 *  \param y position, likewise
 *  \param width width of the client area, pixels
 *  \param height height of the client area, pixels
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window; the operating system's code
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewWindowSize(TavraHandle handle, uint32_t x, uint32_t y, uint32_t width,
                                               uint32_t height);

/** Reads the window's position and client size.
 *
 *  \param handle camera
 *  \param[out] x position, pixels, a signed value carried in 32 bits, as Tavra_SetPreviewWindowSize()
 *  \param[out] y position, likewise
 *  \param[out] width width of the client area, pixels
 *  \param[out] height height of the client area, pixels
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window; the operating system's code
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewWindowSize(TavraHandle handle, uint32_t* x, uint32_t* y, uint32_t* width,
                                               uint32_t* height);

/** Sets the destination, and posts TAVRA_MESSAGE_DESTINATION_CHANGED.
 *
 *  It lasts under TAVRA_ASPECT_FREE, and as a size under TAVRA_ASPECT_SIZE; in the other aspect modes a
 *  window replaces it at once.
 *
 *  \param handle camera
 *  \param x left edge in the client area, pixels
 *  \param y top edge in the client area, pixels
 *  \param width pixels
 *  \param height pixels
 *  \return 1, also if the window could not be told, which leaves the system's code as last error
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewDestSize(TavraHandle handle, uint32_t x, uint32_t y, uint32_t width,
                                             uint32_t height);

/** Reads the destination.
 *
 *  \param handle camera
 *  \param[out] x left edge in the client area, pixels
 *  \param[out] y top edge in the client area, pixels
 *  \param[out] width pixels
 *  \param[out] height pixels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewDestSize(TavraHandle handle, uint32_t* x, uint32_t* y, uint32_t* width,
                                             uint32_t* height);

/** Sets the mask, and posts TAVRA_MESSAGE_MASK_CHANGED. The values are not compared with the image.
 *
 *  \param handle camera
 *  \param x left edge in the image, pixels
 *  \param y top edge in the image, pixels
 *  \param width pixels
 *  \param height pixels
 *  \return 1, also if the window could not be told, which leaves the system's code as last error
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetPreviewMaskSize(TavraHandle handle, uint32_t x, uint32_t y, uint32_t width,
                                             uint32_t height);

/** Reads the mask.
 *
 *  \param handle camera
 *  \param[out] x left edge in the image, pixels
 *  \param[out] y top edge in the image, pixels
 *  \param[out] width pixels
 *  \param[out] height pixels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewMaskSize(TavraHandle handle, uint32_t* x, uint32_t* y, uint32_t* width,
                                             uint32_t* height);

/** Sets how the destination follows from the client size.
 *
 *  \param handle camera
 *  \param mode TAVRA_ASPECT_ code; one from 4 to 253 acts as TAVRA_ASPECT_IMAGE
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the window could not be told; one that the user closed does not
 *      count
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAspectMode(TavraHandle handle, uint8_t mode);

/** Reads how the destination follows from the client size.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_ASPECT_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAspectMode(TavraHandle handle, uint8_t* mode);

/** Lets the mouse zoom: a click halves the mask around the point clicked, with the Alt key it doubles.
 *
 *  The mask is not halved further when width or height of the image, halved as often as both stay whole, is
 *  reached.
 *
 *  \param handle camera
 *  \param mode 0: off, any other value: on
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetMagnificationMode(TavraHandle handle, uint8_t mode);

/** Reads whether the mouse zooms.
 *
 *  \param handle camera
 *  \param[out] mode as set
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMagnificationMode(TavraHandle handle, uint8_t* mode);

#ifdef __cplusplus
}
#endif
#endif
