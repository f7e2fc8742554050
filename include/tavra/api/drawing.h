/** \file drawing.h
 *  How the preview is drawn, drawing on top of it, and the information overlay.
 *
 *  | display mode | back-end | stretching, order |
 *  |---|---|---|
 *  | 0, and any not listed | plain (GDI; memory) | nearest pixel |
 *  | 8 | plain | smooth |
 *  | 1, 3 | surface off screen | formats of 16 bits (1), of 32 bits (3) tried first |
 *  | 2, 4 | hardware overlay | formats of 16 bits (2), of 32 bits (4) tried first |
 *  | 5, 6, 7 | textured (Direct3D 9; OpenGL) | present at once; with the blank; the same, waiting |
 *  | 9, 10, 11 | textured, floating point state of the thread preserved | as 5, 6, 7 |
 *
 *  All but the plain back-ends have a drawing surface of the size of the client area. What the application
 *  draws there shows over the camera image, except where it holds the colour key. Between Tavra_GetDC() and
 *  Tavra_ReleaseDC() the window is not painted, and both must be called on one thread. The stream goes on
 *  meanwhile, however long it takes.
 */
#ifndef TAVRA_API_DRAWING_H
#define TAVRA_API_DRAWING_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Chooses the back-end of the next preview window.
 *
 *  \param handle camera
 *  \param mode see above; not checked
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_WINDOW_EXISTS there is a preview window; one that the user closed does not count
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDisplayMode(TavraHandle handle, uint8_t mode);

/** Reads the display mode.
 *
 *  \param handle camera
 *  \param[out] mode as set; 0 at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDisplayMode(TavraHandle handle, uint8_t* mode);

/** Sets the colour that is transparent on the drawing surface, and clears what was drawn. Waits for a context
 *  that another thread has.
 *
 *  \param handle camera
 *  \param color 0x00BBGGRR, red in the low byte; 0xFF00FF at first
 *  \return 1, or 0 with the last error set
 *  \errors with result 1: 1131 this thread has the context; the window at hand keeps its key and its drawing,
 *      and the next one has the new key
 *  \threads any; waits for a thread that has the context
 */
TAVRA_API TavraBool Tavra_SetColorKey(TavraHandle handle, uint32_t color);

/** Reads the colour that is transparent on the drawing surface.
 *
 *  \param handle camera
 *  \param[out] color 0x00BBGGRR
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetColorKey(TavraHandle handle, uint32_t* color);

/** Sets how opaque the drawing is over the image, in the textured display modes. It counts for what is drawn
 *  from then on.
 *
 *  \param handle camera
 *  \param alpha 0: invisible, 255: opaque, as at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAlphaChannel(TavraHandle handle, uint8_t alpha);

/** Reads how opaque the drawing is.
 *
 *  \param handle camera
 *  \param[out] alpha 0 to 255
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAlphaChannel(TavraHandle handle, uint8_t* alpha);

/** Gives a context on the drawing surface, and holds painting until Tavra_ReleaseDC(). The stream and the
 *  window go on meanwhile; other threads that want the context, a clear surface or another colour key wait. A
 *  context outlives its window, but not Tavra_Close().
 *
 *  \param handle camera
 *  \param[out] dc receives the context (HDC; cairo_t*); null if the back-end could not give one
 *  \return 1, also if the back-end could not give one; in the listed modes the last error then tells why
 *  \errors TAVRA_ERROR_NO_WINDOW there is no preview window; TAVRA_ERROR_LEGACY_CAMERA display mode 0 or 8,
 *      which have no drawing surface; with result 1 and a null context: 1131 this thread has the context
 *      already, or another failure of the back-end
 *  \threads any one thread, which must release it; not in a callback
 */
TAVRA_API TavraBool Tavra_GetDC(TavraHandle handle, TavraDC* dc);

/** Gives the context back, and has the window painted.
 *
 *  \param handle camera
 *  \param dc context of Tavra_GetDC() or Tavra_GetDCWithReset(); null releases nothing
 *  \return 1, also if nothing was released
 *  \errors as Tavra_GetDC(), unless the context is of a window that is gone. With a return of 1: 288 this
 *      thread has no context, 87 it has another one, or a failure of the back-end to take the drawing over.
 *      After 288 and 87 nothing is released
 *  \threads the thread that got the context
 */
TAVRA_API TavraBool Tavra_ReleaseDC(TavraHandle handle, TavraDC dc);

/** As Tavra_GetDC(), and clears the area of the image to the colour key first.
 *
 *  \param handle camera
 *  \param[out] dc receives the context; null if the back-end could not give one
 *  \return 1, also if the back-end could not give one
 *  \errors as Tavra_GetDC(). With a return of 1 and a context: the system's error if it could not be cleared
 *  \threads as Tavra_GetDC()
 */
TAVRA_API TavraBool Tavra_GetDCWithReset(TavraHandle handle, TavraDC* dc);

/** Removes everything that was drawn. Waits for a context that another thread has. In display modes 1 to 4
 *  the window shows it at once; in those with textures with its next paint, which is that of the next
 *  picture unless something else brings one: this call itself does not.
 *
 *  \param handle camera
 *  \return 1
 *  \errors as Tavra_GetDC(); with result 1: 1131 this thread has the context, and nothing is removed
 *  \threads any; waits for a thread that has the context
 */
TAVRA_API TavraBool Tavra_ResetOverlay(TavraHandle handle);

/** Prints the control state into preview images that are shown or drawn on: for tuning and service. The text
 *  becomes part of the image on screen; callbacks, snapshots and recordings of that frame have it not yet,
 *  Tavra_GetPreviewImagePixelValue() does.
 *
 *  The statistics are the weighted means of R, Gr, Gb and B and of luminance, the white balance gains,
 *  shutter line and clock, gain and digital gain. The grid shows the cells of Tavra_SetControlArea() with
 *  their weights.
 *
 *  \param handle camera
 *  \param mode TAVRA_DISPLAY_INFO_ bits; not checked, and any value but 0 keeps the frame statistics running
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDisplayInfoMode(TavraHandle handle, uint32_t mode);

/** Reads which information is printed.
 *
 *  \param handle camera
 *  \param[out] mode as set; 0 at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDisplayInfoMode(TavraHandle handle, uint32_t* mode);

#ifdef __cplusplus
}
#endif
#endif
