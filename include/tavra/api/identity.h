/** \file identity.h
 *  What the camera is, what it can do, and the versions of everything between it and the application.
 *
 *  A camera describes itself by an identity block and by 20 capability words, both read at open; the
 *  functions here answer from that copy, without a transfer unless said so. The oldest types (773, 1541, 1797
 *  and 2053) have no capability words: all their capabilities are absent.
 */
#ifndef TAVRA_API_IDENTITY_H
#define TAVRA_API_IDENTITY_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Tells whether the camera has a function.
 *
 *  A number below 0x10000 stands for bit `number % 16` of capability word `number / 16`. A number `N *
 *  0x10000 + b` stands for bit b of the 32-bit pair of words 2N - 2 (low) and 2N - 1 (high). Beyond the last
 *  word the answer is 0. The numbers 0, 1, 2, 6 and 256 to 261 are resolved with the product type as well:
 *  256, 258, 260 and 261 are present on every camera but the oldest types; 257 is the opposite of 0xA0008;
 *  259 is present for a stored colour array of 1 and for product type 529; 0 exists on the types 272, 528,
 *  2310 and 4102 only; 1 is always present on 2310, 4102, 4358, 4614, 5382 and 5638 of hardware revision 15,
 *  and 2 and 6 on 2310 of hardware revision 16. Of the oldest types every answer is 0.
 *
 *  \param handle camera
 *  \param function TAVRA_FUNCTION_ number or another
 *  \param[out] present 1: present, 0: absent. Set to 0 even if the handle is not valid
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_HasFunction(TavraHandle handle, uint32_t function, uint32_t* present);

/** Reads the identity words.
 *
 *  \param handle camera
 *  \param[out] vendor USB vendor word
 *  \param[out] productType product type code, the key of the camera's model
 *  \param[out] hardwareRevision revision of the electronics
 *  \param[out] firmwareRevision revision of the firmware; 256 and more: USB 3 generation
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetCameraVersion(TavraHandle handle, uint16_t* vendor, uint16_t* productType,
                                           uint16_t* hardwareRevision, uint16_t* firmwareRevision);

/** Reads the model name, in the system code page. An unknown model is called "UNKNOWN".
 *
 *  \param handle camera
 *  \param[out] name receives the name, zero-terminated
 *  \param size bytes at name
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the name does not fit
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetProductNameA(TavraHandle handle, char* name, uint32_t size);

/** Reads the model name, in UTF-16.
 *
 *  \param handle camera
 *  \param[out] name receives the name, zero-terminated
 *  \param size bytes at name; half as many characters are used
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the name does not fit
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetProductNameW(TavraHandle handle, TavraWChar* name, uint32_t size);

/** Reads the word that tells models of one product type apart.
 *
 *  \param handle camera
 *  \param[out] type capability word 7; 0 on the oldest types
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSamePIDCameraType(TavraHandle handle, uint32_t* type);

/** Reads the colour array in force: the stored code, changed by mirroring in the camera as mirror.h tells,
 *  not by mirroring and rotation in the library.
 *
 *  \param handle camera
 *  \param[out] code TAVRA_COLOR_ARRAY_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetColorArray(TavraHandle handle, uint16_t* code);

/** Replaces the stored colour array code. Nothing is sent to the camera; the next frame is processed by the
 *  new code.
 *
 *  \param handle camera
 *  \param code 1 to 5
 *  \return 1, or 0 if code is not from 1 to 5, without a last error
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetColorArray(TavraHandle handle, uint16_t code);

/** Reads the link speed in use from the device's configuration descriptor.
 *
 *  Decisive is the packet size of its first bulk input endpoint: up to 64 bytes full speed, up to 512 high
 *  speed, more super speed. A descriptor of 9 bytes or fewer counts as high speed, one without such an
 *  endpoint as full speed.
 *
 *  \param handle camera
 *  \param[out] speed TAVRA_USB_ code; 0 on failure
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the descriptor cannot be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetUSBSpeed(TavraHandle handle, uint8_t* speed);

/** Reads the highest speed that the camera itself is made for.
 *
 *  \param handle camera
 *  \param[out] speed TAVRA_USB_SUPER_SPEED if the firmware revision is 256 or more, else TAVRA_USB_HIGH_SPEED
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetUSBMaxSpeed(TavraHandle handle, uint8_t* speed);

/** Reads which transfer formats Tavra_SetTransferBitsPerPixel() takes.
 *
 *  \param handle camera
 *  \param[out] mask TAVRA_TRANSFER_ codes ORed
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableTransferBitsPerPixel(TavraHandle handle, uint32_t* mask);

/** Reads the camera's own masks of image sizes and scan modes.
 *
 *  \param handle camera
 *  \param[out] sizeMask mask of image sizes, as the camera reports it; may be null
 *  \param[out] scanModeMask mask of scan modes; bit 15: skipping and binning can be set
 *      (Tavra_SetSkippingAndBinning())
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableImageSize(TavraHandle handle, uint32_t* sizeMask, uint16_t* scanModeMask);

/** Reads which formats Tavra_SetPreviewPixelFormat() takes.
 *
 *  \param handle camera
 *  \param[out] mask TAVRA_PIXEL_ codes ORed: 12, or 13 for a mono-like camera
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnablePreviewPixelFormat(TavraHandle handle, uint32_t* mask);

/** Reads which clocks Tavra_SetClock() takes.
 *
 *  \param handle camera
 *  \param[out] mask clock modes ORed; TAVRA_CLOCK_MODE_FREE among them allows any clock of the range below
 *  \param[out] clockValue the camera's own clock value, Hz; 24545455 if it reports none
 *  \param[out] clockMinimum lowest clock of the free mode, Hz
 *  \param[out] clockMaximum highest clock of the free mode, Hz
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableClock(TavraHandle handle, uint32_t* mask, uint32_t* clockValue,
                                         uint32_t* clockMinimum, uint32_t* clockMaximum);

/** Reads the camera's trigger version word, as it reports it.
 *
 *  \param handle camera
 *  \param[out] version trigger version; 0 if the camera reports none
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableTriggerVersion(TavraHandle handle, uint32_t* version);

/** Reads the version of the kernel driver under the USB access library.
 *
 *  \param handle camera
 *  \param[out] majorMinor major version in the high half, minor version in the low half
 *  \param[out] build build number
 *  \param[out] word2 third word of the driver's version
 *  \param[out] word3 fourth word
 *  \return 1, or 0 with the last error set
 *  \errors the operating system's code if the version cannot be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDriverVersion(TavraHandle handle, uint32_t* majorMinor, uint32_t* build,
                                           uint32_t* word2, uint32_t* word3);

/** Reads the version of the USB access library. Needs no camera.
 *
 *  \param[out] version0 file version, high half
 *  \param[out] version1 file version, low half
 *  \param[out] version2 product version, high half
 *  \param[out] version3 product version, low half
 *  \return 1, or 0 if the library is missing or does not tell
 *  \errors the code goes to the global last error
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetUSBDllVersion(uint32_t* version0, uint32_t* version1, uint32_t* version2,
                                           uint32_t* version3);

/** Reads the version of this library. Needs no camera. All parts are 0 if the library file carries no version
 *  record.
 *
 *  \param[out] fileVersionHigh file version: major in the high half, minor in the low half
 *  \param[out] fileVersionLow file version: patch level and build
 *  \param[out] productVersionHigh product version, likewise
 *  \param[out] productVersionLow product version, likewise
 *  \return 1
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetCAMDllVersion(uint32_t* fileVersionHigh, uint32_t* fileVersionLow,
                                           uint32_t* productVersionHigh, uint32_t* productVersionLow);

#ifdef __cplusplus
}
#endif
#endif
