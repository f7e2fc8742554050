/** \file tavra_host.h
 *  What an application needs beside the exported functions on a platform without window messages.
 *
 *  A receiver is an in-process message queue that can be given wherever the interface takes the window
 *  that is to receive messages (Tavra_SetReceiveMsgWindow()). On Windows the window handle is an HWND and
 *  messages are posted to it; these functions do not exist there. On Linux a TavraWindow is either a
 *  receiver or an X11 window (its XID); an X11 window gets each message as a ClientMessage of type
 *  "TAVRA_MESSAGE", format 32, with data.l = { message, first parameter low, first parameter high, second
 *  parameter low, second parameter high }.
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

#ifdef __cplusplus
}
#endif
#endif
#endif
