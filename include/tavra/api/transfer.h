/** \file transfer.h
 *  Starting and stopping the stream.
 *
 *  A stream is run by the camera's capture thread. A frame goes through these steps, in this order:
 *
 *  - raw snapshot, raw callbacks: the frame as sent;
 *  - regions of interest composed (geometry.h); samples reduced to 8 bits; noise reduction (enhance.h); white
 *    balance gains (white_balance.h); statistics, exposure and white balance control (auto_exposure.h);
 *  - shading correction (shading.h), gamma of the mosaic positions (gamma.h), mirror and rotation (mirror.h),
 *    recording of raw frames (recording.h), colour interpolation (interpolation.h);
 *  - luminance gamma (gamma.h), sharpness (enhance.h), colour matrix (color.h), chroma suppression
 *    (enhance.h), recording of images (recording.h), preview snapshot, preview bitmap callbacks, preview GDI
 *    callbacks, information overlay (drawing.h), and the image is published and shown (preview_window.h).
 *
 *  Mosaic transfer formats go through all of it. The mono formats leave out noise reduction, white balance,
 *  control, shading and the gamma of mosaic positions, and a frame without colour (also of a mono-like colour
 *  array) leaves out the matrix and chroma suppression. BGR and YCbCr formats take part from mirror and
 *  rotation on. Nothing is done that nobody asked for: without preview consumers and with the controls off, a
 *  frame costs no more than its raw callbacks.
 *
 *  Errors of a stream are told by nothing but the end code of TAVRA_MESSAGE_TRANSFER_ENDED. Damaged frames
 *  vanish. After any end the stream must be started again; a recording does not outlive it.
 *
 *  The end code is 0 after a stop; TAVRA_ERROR_DEVICE_GONE if the camera went away, and from then on after
 *  every run of this handle; another code if a step of the processing failed.
 */
#ifndef TAVRA_API_TRANSFER_H
#define TAVRA_API_TRANSFER_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Starts the stream; a running stream is ended and started anew.
 *
 *  The result tells that the capture thread exists; whether it works is told by
 *  TAVRA_MESSAGE_TRANSFER_STARTED and TAVRA_MESSAGE_TRANSFER_ENDED. A stream started this way runs until it
 *  is stopped, also if nobody wants its frames. It needs a preview window, a preview callback, a preview
 *  snapshot or a recording for preview images to be made at all.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the thread cannot be created
 *  \threads any, not in a callback. Concurrent starts and stops of one camera: serialise
 */
TAVRA_API TavraBool Tavra_StartTransfer(TavraHandle handle);

/** Stops the stream and waits until its last frame is through: after the return no callback runs, and a
 *  recording has been closed.
 *
 *  \param handle camera
 *  \return 1, also if no stream runs
 *  \errors none of its own
 *  \threads any, not in a callback (it would wait for itself for ever). Concurrent starts and stops of one
 *      camera: serialise
 */
TAVRA_API TavraBool Tavra_StopTransfer(TavraHandle handle);

/** Asks the camera to drop the frames that it holds in its own buffer. Frames that have already reached this
 *  side stay.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types, no request is made;
 *      TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ClearBuffer(TavraHandle handle);

#ifdef __cplusplus
}
#endif
#endif
