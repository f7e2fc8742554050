/* tavra_usbd.h: C interface between libtavra and the USB access library.
 *
 * libtavra never talks to USB itself: everything goes through this table of operations, which it
 * loads at run time. The project ships one implementation (libusb devices and virtual cameras);
 * a vendor's closed library, or a test double, is dropped in by file name.
 *
 *   Linux    libtavrausbd.so.1, found by the loader, or the absolute path in the environment
 *            variable TAVRA_USBD (ignored in set-id programs). Symbols are looked up by name.
 *   Windows  TavraUSBD.dll, operations imported by ordinal (the number behind each name).
 *
 * Unless stated, an operation returns non-zero for success. After a failure the reason is the calling
 * thread's last error, a Windows error number on every platform: UsbGetLastError() on Linux,
 * GetLastError() on Windows. Operations not marked optional must exist; a library without one of them is
 * refused with a clear error at load. Operations marked [Linux] are required on Linux. A Windows library may
 * export them by name too, and they are then used; otherwise its device handle is a file handle, and
 * ReadFile, GetOverlappedResult and DeviceIoControl do the same (a closed library has only the ordinals). Any
 * operation may be called from any thread; control transfers run beside reads in flight.
 */
#ifndef TAVRA_USBD_H
#define TAVRA_USBD_H
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
typedef char16_t TavraWChar;
#else
typedef uint16_t TavraWChar;
#endif

/* One operation a line, with its number behind it. */
/* clang-format off */
typedef uint64_t TavraUsbDevice;            /* 0: no device */

/* One asynchronous read. 32 bytes, the layout of an overlapped record: the event stands last. */
typedef struct TavraUsbRead {
    uint64_t status;                        /* owned by the USB access library while in flight */
    uint64_t transferred;                   /* likewise */
    uint64_t reserved;
    int64_t  event;                         /* set by the caller. Linux: an eventfd, readable = signalled (manual reset);
                                               Windows: an event HANDLE */
} TavraUsbRead;

uint32_t       UsbGetLastError(void);                                                            /* [Linux] thread's last error */

TavraUsbDevice UsbOpenByIndex(uint32_t index);                                                   /*  1 */
int32_t        UsbClose(TavraUsbDevice device);                                                  /*  2 */
int32_t        UsbGetDriverVersion(TavraUsbDevice device, uint32_t* majorMinor, uint32_t* build,
                                   uint32_t* word2, uint32_t* word3);                            /*  3 */
int32_t        UsbGetLibraryVersion(uint32_t* fileHigh, uint32_t* fileLow,
                                    uint32_t* productHigh, uint32_t* productLow);                /*  4 */
int32_t        UsbGetConfigDescriptor(TavraUsbDevice device, void* buffer, uint32_t size,
                                      uint32_t* length);                                         /*  9 */
int32_t        UsbGetFunctionAddress(TavraUsbDevice device, uint32_t* address);                  /* 10 */
int32_t        UsbGetOpenCount(TavraUsbDevice device, uint32_t* count);                          /* 11, this opening included */
int32_t        UsbControlTransfer(TavraUsbDevice device, uint8_t requestType, uint8_t request,
                                  uint16_t value, uint16_t index, uint16_t length, void* data,
                                  uint32_t* transferred);                                        /* 13 */
int32_t        UsbReadI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg,
                              uint16_t count, void* buffer, uint32_t* transferred);              /* 15 */
int32_t        UsbWriteI2CWord(TavraUsbDevice device, uint8_t bus, uint8_t address, uint16_t reg,
                               uint16_t count, const void* buffer, uint32_t* transferred);       /* 16 */
int32_t        UsbReadI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg,
                              uint8_t count, void* buffer, uint32_t* transferred);               /* 17 */
int32_t        UsbWriteI2CByte(TavraUsbDevice device, uint8_t bus, uint8_t address, uint8_t reg,
                               uint8_t count, const void* buffer, uint32_t* transferred);        /* 18 */
int32_t        UsbReadControllerMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                       void* buffer, uint32_t* transferred);                     /* 19, optional */
int32_t        UsbWriteControllerMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                        const void* buffer, uint32_t* transferred);              /* 20, optional */
int32_t        UsbDownloadFirmware(TavraUsbDevice device, const uint8_t* image, const uint8_t* mask,
                                   uint32_t length, uint32_t* result);                           /* 21 */
int32_t        UsbParseHexImage(const char* text, uint32_t textLength, uint8_t* image,
                                uint8_t* mask, uint32_t capacity, uint32_t* length);             /* 26 */
int32_t        UsbParseSecondImage(const uint8_t* image, const uint8_t* mask, uint32_t length,
                                   uint8_t* second, uint32_t capacity, uint32_t* secondLength);  /* 27, optional */
int32_t        UsbEndRead(TavraUsbDevice device);                                                /* 34, ends every read in flight before it returns */
int32_t        UsbBeginRead(TavraUsbDevice device);                                              /* 35, may fail with 31 while the device settles */
int32_t        UsbCanResumeRead(TavraUsbDevice device);                                          /* 36 */
int32_t        UsbCheckConfiguration(TavraUsbDevice device, uint32_t* word0, uint32_t* word1);   /* 42 */
int32_t        UsbReadMemory(TavraUsbDevice device, uint32_t first, uint32_t last, void* buffer,
                             uint32_t* transferred);                                             /* 43, both addresses inclusive */
int32_t        UsbWriteMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                              const void* buffer, uint32_t* transferred);                        /* 44 */
int32_t        UsbReadSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                  void* buffer, uint32_t* transferred);                          /* 45 */
int32_t        UsbWriteSetupMemory(TavraUsbDevice device, uint32_t first, uint32_t last,
                                   const void* buffer, uint32_t* transferred);                   /* 46 */
TavraUsbDevice UsbOpenByPathW(const TavraWChar* path);                                           /* 47 */
TavraUsbDevice UsbOpenByPathA(const char* path);                                                 /* 48 */
TavraUsbDevice UsbOpenByIndexPath(uint32_t index, TavraWChar* path, uint32_t* pathBytes);        /* 49, pathBytes: capacity in, used out, NUL included */

/* [Linux] Queues one bulk read. Resets the event and returns 0 with last error 997: the read is in flight, and the event is
 * set when it completes, successful or not (for one that completed at once, it is set already). Non-zero is never
 * returned. Any other last error: the read was not queued (1167 or 5: the device is gone). */
int32_t        UsbStartRead(TavraUsbDevice device, void* buffer, uint32_t size, TavraUsbRead* read);

/* [Linux] Result of a read. With wait non-zero it blocks until the read has completed. Non-zero: *transferred
 * holds the bytes read (fewer than asked: a short packet ended the transfer). 0: the last error says why
 * (996 not complete yet, 995 cancelled, 31 device not functioning, 23 data error, 5 or 1167 device gone). */
int32_t        UsbGetReadResult(TavraUsbDevice device, TavraUsbRead* read, uint32_t* transferred, int32_t wait);

/* [Linux] Device control 0x222140 or 0x222180: asks the driver to bring a camera that failed its configuration
 * check back. Blocks until it is done. 0: not possible. */
int32_t        UsbDeviceControl(TavraUsbDevice device, uint32_t code);

/* [Linux, optional, as a pair] Memory that the kernel can fill without a copy. NULL: not to be had, use ordinary pages. */
void*          UsbAllocReadMemory(TavraUsbDevice device, size_t size);
void           UsbFreeReadMemory(TavraUsbDevice device, void* memory, size_t size);

/* clang-format on */

#ifdef __cplusplus
}
#endif
#endif
