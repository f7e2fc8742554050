/** \file callbacks.h
 *  Calling the application with each frame.
 *
 *  There are three lists, each called on the capture thread in the order of registration:
 *
 *  - raw callbacks get the frame as the camera sent it, before anything else;
 *  - preview bitmap callbacks get the finished preview image;
 *  - preview GDI callbacks get a drawing context on the preview image, before it is shown, to draw on it.
 *
 *  Callbacks may be added and removed at any time, also while the stream runs; a change is seen by the next
 *  frame. While a list is being called, other threads that use that list wait. A callback itself may use the
 *  list functions, but must not remove its own registration, nor call anything that waits for the capture
 *  thread (told as "not in a callback"). A callback that takes long first fills the four frames that the read
 *  side holds, and then the camera has to wait; nothing grows.
 *
 *  Any raw callback keeps a stream alive that a snapshot started; the first preview callback turns the making
 *  of preview images on.
 */
#ifndef TAVRA_API_CALLBACKS_H
#define TAVRA_API_CALLBACKS_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Registers a callback for raw frames.
 *
 *  \param handle camera
 *  \param function called for each frame; must not be null
 *  \param context handed back to the callback as it is; may be null
 *  \param[out] identifier receives the registration's number: one above the highest number in the list, 1 for
 *      an empty list. Numbers of removed registrations can come back
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_AddRawCallback(TavraHandle handle, TavraRawCallback function, void* context,
                                         uint32_t* identifier);

/** Registers a callback for finished preview images.
 *
 *  \param handle camera
 *  \param function called for each preview image; must not be null
 *  \param context handed back to the callback as it is; may be null
 *  \param[out] identifier receives the registration's number, as Tavra_AddRawCallback()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_AddPreviewBitmapCallback(TavraHandle handle, TavraPreviewBitmapCallback function,
                                                   void* context, uint32_t* identifier);

/** Registers a callback that draws on preview images.
 *
 *  \param handle camera
 *  \param function called for each preview image; must not be null
 *  \param context handed back to the callback as it is; may be null
 *  \param[out] identifier receives the registration's number, as Tavra_AddRawCallback()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_AddPreviewGDICallback(TavraHandle handle, TavraPreviewGDICallback function,
                                                void* context, uint32_t* identifier);

/** Removes a registration. After the return the callback does not run and will not.
 *
 *  \param handle camera
 *  \param identifier its number; an unknown number changes nothing
 *  \return 1
 *  \errors none of its own
 *  \threads any; in a callback only for another registration than its own
 */
TAVRA_API TavraBool Tavra_RemoveRawCallback(TavraHandle handle, uint32_t identifier);

/** Removes a registration, as Tavra_RemoveRawCallback().
 *
 *  \param handle camera
 *  \param identifier its number; an unknown number changes nothing
 *  \return 1
 *  \errors none of its own
 *  \threads as Tavra_RemoveRawCallback()
 */
TAVRA_API TavraBool Tavra_RemovePreviewBitmapCallback(TavraHandle handle, uint32_t identifier);

/** Removes a registration, as Tavra_RemoveRawCallback().
 *
 *  \param handle camera
 *  \param identifier its number; an unknown number changes nothing
 *  \return 1
 *  \errors none of its own
 *  \threads as Tavra_RemoveRawCallback()
 */
TAVRA_API TavraBool Tavra_RemovePreviewGDICallback(TavraHandle handle, uint32_t identifier);

/** Removes all raw callbacks.
 *
 *  \param handle camera
 *  \return 1
 *  \errors none of its own
 *  \threads any, not in a raw callback
 */
TAVRA_API TavraBool Tavra_RemoveAllRawCallback(TavraHandle handle);

/** Removes all preview bitmap callbacks.
 *
 *  \param handle camera
 *  \return 1
 *  \errors none of its own
 *  \threads any, not in a preview bitmap callback
 */
TAVRA_API TavraBool Tavra_RemoveAllPreviewBitmapCallback(TavraHandle handle);

/** Removes all preview GDI callbacks.
 *
 *  \param handle camera
 *  \return 1
 *  \errors none of its own
 *  \threads any, not in a preview GDI callback
 */
TAVRA_API TavraBool Tavra_RemoveAllPreviewGDICallback(TavraHandle handle);

/** Counts the raw callbacks.
 *
 *  \param handle camera
 *  \param[out] count registrations
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetRawCallbackCount(TavraHandle handle, uint32_t* count);

/** Counts the preview bitmap callbacks.
 *
 *  \param handle camera
 *  \param[out] count registrations
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewBitmapCallbackCount(TavraHandle handle, uint32_t* count);

/** Counts the preview GDI callbacks.
 *
 *  \param handle camera
 *  \param[out] count registrations
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewGDICallbackCount(TavraHandle handle, uint32_t* count);

/** Reads one registration by its place in the list.
 *
 *  \param handle camera
 *  \param position from 0
 *  \param[out] function receives the callback; null past the end
 *  \param[out] identifier receives the number; 0 past the end
 *  \return 1, also past the end
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetRawCallback(TavraHandle handle, uint32_t position, TavraRawCallback* function,
                                         uint32_t* identifier);

/** Reads one registration by its place in the list.
 *
 *  \param handle camera
 *  \param position from 0
 *  \param[out] function receives the callback; null past the end
 *  \param[out] identifier receives the number; 0 past the end
 *  \return 1, also past the end
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewBitmapCallback(TavraHandle handle, uint32_t position,
                                                   TavraPreviewBitmapCallback* function,
                                                   uint32_t* identifier);

/** Reads one registration by its place in the list.
 *
 *  \param handle camera
 *  \param position from 0
 *  \param[out] function receives the callback; null past the end
 *  \param[out] identifier receives the number; 0 past the end
 *  \return 1, also past the end
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewGDICallback(TavraHandle handle, uint32_t position,
                                                TavraPreviewGDICallback* function, uint32_t* identifier);

/** Reads the registrations in order.
 *
 *  \param handle camera
 *  \param capacity entries in each of the two arrays; 0 asks for the count only
 *  \param[out] functions receives up to capacity callbacks; may be null with capacity 0
 *  \param[out] identifiers receives up to capacity numbers; may be null with capacity 0
 *  \param[out] count receives the length of the whole list, also above capacity
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetRawCallbackList(TavraHandle handle, uint32_t capacity,
                                             TavraRawCallback* functions, uint32_t* identifiers,
                                             uint32_t* count);

/** Reads the registrations in order.
 *
 *  \param handle camera
 *  \param capacity entries in each of the two arrays; 0 asks for the count only
 *  \param[out] functions receives up to capacity callbacks; may be null with capacity 0
 *  \param[out] identifiers receives up to capacity numbers; may be null with capacity 0
 *  \param[out] count receives the length of the whole list, also above capacity
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewBitmapCallbackList(TavraHandle handle, uint32_t capacity,
                                                       TavraPreviewBitmapCallback* functions,
                                                       uint32_t* identifiers, uint32_t* count);

/** Reads the registrations in order.
 *
 *  \param handle camera
 *  \param capacity entries in each of the two arrays; 0 asks for the count only
 *  \param[out] functions receives up to capacity callbacks; may be null with capacity 0
 *  \param[out] identifiers receives up to capacity numbers; may be null with capacity 0
 *  \param[out] count receives the length of the whole list, also above capacity
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPreviewGDICallbackList(TavraHandle handle, uint32_t capacity,
                                                    TavraPreviewGDICallback* functions, uint32_t* identifiers,
                                                    uint32_t* count);

#ifdef __cplusplus
}
#endif
#endif
