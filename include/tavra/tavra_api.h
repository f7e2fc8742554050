/** \file tavra_api.h
 *  libtavra: industrial USB cameras, from the stream to the picture, the screen and the disk.
 *
 *  The one header that an application includes. The library finds and opens a camera, runs its image
 *  stream, turns raw sensor frames into images ready to show, controls exposure and white balance from the
 *  frames, shows the result in a preview window, hands raw frames and images to the application, saves
 *  stills and movies, and keeps settings in files and in the user's store. It has no user interface of its
 *  own beyond the preview window, prints nothing, and is usable from C11 and from C++.
 *
 *  \code{.c}
 *  #include <stdio.h>
 *  #include <stdlib.h>
 *  #include <tavra/tavra_api.h>
 *
 *  int main(void) {
 *      TavraHandle camera = Tavra_Open(0);
 *      if (camera == NULL) {
 *          printf("no camera: 0x%X\n", (unsigned)Tavra_GetLastError(NULL));
 *          return 1;
 *      }
 *      uint32_t size = 0, width = 0, height = 0, format = 0, written = 0;
 *      Tavra_GetPreviewDataSize(camera, &size, &width, &height, NULL);
 *      Tavra_GetPreviewPixelFormat(camera, &format);
 *      uint8_t* image = (uint8_t*)malloc(size);
 *      TavraBool good = image != NULL &&
 *                       Tavra_TakePreviewSnapShot(camera, image, size, &written, NULL, 5000) &&
 *                       Tavra_SaveImageA(camera, width, height, format, image, "first.png", 0);
 *      if (!good) printf("no picture: 0x%X\n", (unsigned)Tavra_GetLastError(camera));
 *      free(image);
 *      Tavra_Close(camera);
 *      return good ? 0 : 1;
 *  }
 *  \endcode
 *
 *  \par Families
 *  Each header of api/ stands for itself too:
 *  - camera: open.h, identity.h, registers.h, geometry.h, clock.h, memory.h, camera_settings.h, firmware.h
 *  - stream: transfer.h, callbacks.h, snapshot.h, trigger.h, io_pins.h
 *  - image: interpolation.h, color.h, gamma.h, enhance.h, shading.h, mirror.h, defect.h
 *  - control: exposure.h, gain.h, auto_exposure.h, white_balance.h
 *  - screen: preview_window.h, drawing.h
 *  - files: stills.h, recording.h, smf.h, settings_file.h, settings_registry.h
 *
 *  The code tables (TAVRA_ names), callback types and error codes are in tavra_types.h. Platforms without
 *  window messages have tavra_host.h to receive messages with.
 *
 *  \par Handles
 *  Almost every function takes the camera handle that Tavra_Open() returned, as its first argument. It is
 *  valid until Tavra_Close(). A null handle fails with TAVRA_ERROR_INVALID_HANDLE in the global last error;
 *  a handle that was closed must not be used, and that is not checked. This error is not repeated at each
 *  function.
 *
 *  \par Results and errors
 *  A TavraBool is not 0 for success and 0 for failure. A failure stores its code as the handle's last
 *  error, and Tavra_GetLastError() reads it; success leaves the code as it was (Tavra_SaveImageW() is the
 *  one exception). A function that fails changes nothing unless its description says so. Each description
 *  lists the codes of that function with their causes. In general:
 *  - TAVRA_ERROR_INVALID_ARGUMENT: an argument out of range, or a setting that this camera does not have. A
 *    getter of such a setting succeeds and gives 0;
 *  - TAVRA_ERROR_CONTROL_TRANSFER: the camera did not answer, or answered short. Requests are never
 *    repeated. A camera that was unplugged gives this code for all requests, and the handle stays valid
 *    until it is closed;
 *  - TAVRA_ERROR_LEGACY_CAMERA: the oldest camera types (product types 773, 1541, 1797, 2053) have no such
 *    request;
 *  - TAVRA_ERROR_TRANSFER_RUNNING: image size, formats, setting files and named settings need a stopped
 *    stream;
 *  - TAVRA_ERROR_RECORDING: not while a recording exists.
 *
 *  What fails in a running stream is told by the end code of TAVRA_MESSAGE_TRANSFER_ENDED and not by the
 *  last error.
 *
 *  \par Arguments
 *  Pointers must not be null, unless the description says that they may. The library keeps no pointer after
 *  the call, but for the context of a callback. Buffers need no alignment beyond that of their elements.
 *  After a failure the content of outputs is not defined, unless told otherwise. A few signed values travel
 *  in unsigned arguments, where the description says so, as two's complement.
 *
 *  \par Text
 *  Functions with text come as an A form, in the system code page (on Windows the ANSI code page, elsewhere
 *  the encoding of the locale, which has to be set), and as a W form in UTF-16. Both end with a zero.
 *
 *  \par Threads
 *  Each description names the threads that may call the function:
 *  - any: every thread, at every time between open and close, beside other calls and while the stream runs,
 *    from a callback too. A setting is taken over as a whole, at the next frame;
 *  - any, not in a callback: the function waits for the capture thread, or for something that only that
 *    thread brings about, or the stream must be stopped for it. A call from a callback would wait for
 *    itself for ever, or fail;
 *  - serialise: the calls named are not protected against each other, and the application sees to it that
 *    they do not run at the same time;
 *  - a certain thread, where a window, a drawing context or a reader belongs to it.
 *
 *  Tavra_Close() never runs beside another call on its handle. Different cameras have nothing in common,
 *  and never wait for each other.
 *
 *  \par Callbacks and messages
 *  Callbacks run on the capture thread (callbacks.h). Messages are posted to a receiver and never waited
 *  for (Tavra_SetReceiveMsgWindow()).
 */
#ifndef TAVRA_API_H
#define TAVRA_API_H

#include "tavra_types.h"

/* Camera; stream; image; control; screen; files. */
#include "api/camera_settings.h"
#include "api/clock.h"
#include "api/firmware.h"
#include "api/geometry.h"
#include "api/identity.h"
#include "api/memory.h"
#include "api/open.h"
#include "api/registers.h"

#include "api/callbacks.h"
#include "api/io_pins.h"
#include "api/snapshot.h"
#include "api/transfer.h"
#include "api/trigger.h"

#include "api/color.h"
#include "api/defect.h"
#include "api/enhance.h"
#include "api/gamma.h"
#include "api/interpolation.h"
#include "api/mirror.h"
#include "api/shading.h"

#include "api/auto_exposure.h"
#include "api/exposure.h"
#include "api/gain.h"
#include "api/white_balance.h"

#include "api/drawing.h"
#include "api/preview_window.h"

#include "api/recording.h"
#include "api/settings_file.h"
#include "api/settings_registry.h"
#include "api/smf.h"
#include "api/stills.h"

#endif
