/* The headers from C: the values that an application's binary carries, the shapes of callbacks, and the
 * functions of tavra_host.h called from C. What is wrong fails to compile, or ends with a message and 1.
 */
#include <stdio.h>
#include <string.h>
#include <tavra/tavra_api.h>
#include <tavra/tavra_host.h>

_Static_assert(sizeof(TavraWChar) == 2, "wide text is UTF-16");
_Static_assert(sizeof(TavraBool) == 4, "results are 32 bits");
_Static_assert(sizeof(TavraHandle) == 8, "64-bit targets only");
_Static_assert(sizeof(TavraWindow) == 8, "a window travels as a pointer");

_Static_assert(TAVRA_ERROR_NO_CAMERA == 3758096385u, "0xE0000001");
_Static_assert(TAVRA_ERROR_LEGACY_CAMERA == 3758096417u, "0xE0000021");
_Static_assert(TAVRA_MESSAGE_TRANSFER_STARTED == 0xB001, "first message");
_Static_assert(TAVRA_MESSAGE_FRAME_FINISHED == 0xB00B, "last message");
_Static_assert(TAVRA_AVI_COMPRESSOR_MJPG == 'M' + ('J' << 8) + ('P' << 16) + ('G' << 24),
               "FOURCC, little endian");
_Static_assert(TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN == (TAVRA_ALC_CAMERA_SHUTTER | TAVRA_ALC_CAMERA_GAIN),
               "0x30");

/* Callbacks as an application writes them; the assignments below fail to compile if a type differs. */
static void onRaw(void* data, uint32_t size, uint32_t width, uint32_t height, uint32_t frameNumber,
                  uint16_t colorArray, uint32_t transferBits, void* context, uint32_t* word) {
    (void)data, (void)size, (void)width, (void)height, (void)frameNumber, (void)colorArray,
        (void)transferBits;
    (void)context, (void)word;
}
static void onBitmap(void* image, uint32_t size, uint32_t width, uint32_t height, uint32_t frameNumber,
                     uint32_t pixelFormat, void* context, uint32_t* word) {
    (void)image, (void)size, (void)width, (void)height, (void)frameNumber, (void)pixelFormat, (void)context;
    (void)word;
}
static void onContext(TavraDC dc, uint32_t width, uint32_t height, uint32_t frameNumber, void* context,
                      uint32_t word) {
    (void)dc, (void)width, (void)height, (void)frameNumber, (void)context, (void)word;
}
static TavraBool onProgress(uint32_t currentFrame, uint32_t frameCount, void* context) {
    (void)currentFrame, (void)frameCount, (void)context;
    return 1;
}

static TavraRawCallback const rawCallback = onRaw;
static TavraPreviewBitmapCallback const bitmapCallback = onBitmap;
static TavraPreviewGDICallback const contextCallback = onContext;
static TavraSmfProgressCallback const progressCallback = onProgress;

#if !defined(_WIN32)
_Static_assert(sizeof(TavraMessage) == 24, "layout of a message");
_Static_assert(offsetof(TavraMessage, parameter2) == 16, "layout of a message");
_Static_assert(sizeof(TavraCodecChoice) == 16, "layout of a choice");

static TavraBool onCodecQuestion(void* context, uint32_t width, uint32_t height, uint32_t bitCount,
                                 TavraCodecChoice* choice) {
    (void)context;
    (void)width;
    (void)height;
    (void)bitCount;
    choice->quality = 50;
    return 0;
}

static int receiverFromC(void) {
    TavraMessage message;
    memset(&message, 0x5A, sizeof message);
    TavraHost_SetCodecChooser(onCodecQuestion, NULL);
    TavraHost_SetCodecChooser(NULL, NULL);
    TavraWindow receiver = TavraHost_CreateReceiver();
    if (receiver == NULL) {
        fputs("no receiver\n", stderr);
        return 1;
    }
    if (TavraHost_ReceiverFd(receiver) < 0) {
        fputs("a receiver without descriptor\n", stderr);
        return 1;
    }
    if (TavraHost_WaitMessage(receiver, &message, 0) != 0) {
        fputs("a new receiver is not empty\n", stderr);
        return 1;
    }
    TavraHost_DestroyReceiver(receiver);
    if (TavraHost_ReceiverFd(receiver) != -1) {
        fputs("a destroyed receiver still answers\n", stderr);
        return 1;
    }
    return 0;
}
#else
static int receiverFromC(void) {
    return 0;
}
#endif

int main(void) {
    if (rawCallback == NULL || bitmapCallback == NULL || contextCallback == NULL || progressCallback == NULL)
        return 1;
    return receiverFromC();
}
