/** \file tavra_host.h
 *  What an application needs beside the exported functions on a platform without window messages and
 *  without the system's dialogs.
 *
 *  A receiver is an in-process message queue that can be given wherever the interface takes the window
 *  that is to receive messages (Tavra_SetReceiveMsgWindow()). On Windows the window handle is an HWND and
 *  messages are posted to it; these functions do not exist there. On Linux a TavraWindow is either a
 *  receiver or an X11 window (its XID); an X11 window gets each message as a ClientMessage of type
 *  "TAVRA_MESSAGE", format 32, with data.l = { message, first parameter low, first parameter high, second
 *  parameter low, second parameter high }. The event goes to the client that made the window, whatever that
 *  has selected. A window is looked up on the display that DISPLAY names when it is given to the camera; one
 *  that ended is no receiver any more. Posting does not wait for the application; a server that hangs loses
 *  messages.
 *
 *  A receiver belongs to the application. Any thread may post to it and one or more threads may wait on it.
 *  Destroy it only when no camera has it as its receiver and no thread waits on it; a message posted to a
 *  destroyed receiver is lost, nothing else happens.
 *
 *  A queue holds at most 10,000 messages; posting to a full one loses the message, as with a full window
 *  queue.
 */
#ifndef TAVRA_HOST_H
#define TAVRA_HOST_H

#include "tavra_types.h"

#if !defined(_WIN32)
#ifdef __cplusplus
extern "C" {
#endif

/** One message of a camera (TAVRA_MESSAGE_). */
typedef struct TavraMessage {
    uint32_t message;    /**< 45057 to 45067 (TAVRA_MESSAGE_) */
    uint32_t reserved;   /**< 0 */
    uint64_t parameter1; /**< the camera handle, as a number */
    uint64_t parameter2; /**< by message, see TAVRA_MESSAGE_ */
} TavraMessage;

/** Makes an empty receiver.
 *
 *  \return receiver; null: out of memory or descriptors
 *  \threads any
 */
TAVRA_API TavraWindow TavraHost_CreateReceiver(void);

/** Ends a receiver and frees its queue.
 *
 *  \param receiver null and a receiver already destroyed are ignored
 *  \threads any
 */
TAVRA_API void TavraHost_DestroyReceiver(TavraWindow receiver);

/** Takes the oldest message, waiting for one.
 *
 *  \param receiver receiver
 *  \param[out] message receives the message
 *  \param timeoutMs milliseconds to wait; 0: only looks, 0xFFFFFFFF: no limit
 *  \return 1: message was filled. 0: none came in time, or an argument is not a receiver
 *  \threads any; of several that wait, one gets the message
 */
TAVRA_API TavraBool TavraHost_WaitMessage(TavraWindow receiver, TavraMessage* message, uint32_t timeoutMs);

/** Gives a descriptor that is readable while a message waits, for poll, epoll, GLib and Qt.
 *
 *  It is owned by the receiver: do not read from it or close it.
 *
 *  \param receiver receiver
 *  \return descriptor; -1: not a receiver
 *  \threads any
 */
TAVRA_API int TavraHost_ReceiverFd(TavraWindow receiver);

/** A codec for a movie, as a user chose it. */
typedef struct TavraCodecChoice {
    uint32_t compressor;    /**< FOURCC, first character in the low byte */
    uint32_t quality;       /**< 0 (coarsest) to 100; any other value: that of the recording */
    uint32_t keyFrameEvery; /**< frames from one key frame to the next; 0: as the codec has it */
    uint32_t dataRate;      /**< bytes a second, in place of the quality; 0: by the quality */
} TavraCodecChoice;

/** Lets the user choose the codec of a movie that is about to be recorded.
 *
 *  It is called when a recording or a conversion starts with TAVRA_AVI_COMPRESSOR_CHOOSE, once for each, on
 *  the thread that starts it, which waits for the answer. It may call anything but the camera that is about
 *  to record.
 *
 *  \param context as given to TavraHost_SetCodecChooser()
 *  \param width pixels of a row of the movie's frames
 *  \param height rows
 *  \param bitCount 8: gray, 24: colour
 *  \param[in,out] choice comes with no compressor, the recording's quality and zeros; receives the answer
 *  \return 1: chosen. 0: cancelled; the start fails with TAVRA_ERROR_COMPRESSOR_D
 */
typedef TavraBool (*TavraCodecChooser)(void* context, uint32_t width, uint32_t height, uint32_t bitCount,
                                       TavraCodecChoice* choice);

/** Sets the function that is asked for the codec of a movie. There is one for the whole program.
 *
 *  On Windows the system's own dialog asks. Without a chooser, here, every such question is cancelled.
 *
 *  A call that is under way when another chooser is set goes on with the one before.
 *
 *  \param chooser function; null: none any more
 *  \param context handed to the function as it is
 *  \threads any
 */
TAVRA_API void TavraHost_SetCodecChooser(TavraCodecChooser chooser, void* context);

#ifdef __cplusplus
}
#endif
#endif
#endif
