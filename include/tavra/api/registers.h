/** \file registers.h
 *  Status words, registers and the device underneath: the camera's own control space.
 *
 *  Most applications never need these: every setting has a function of its own. A write here goes to the
 *  camera as it is, and nothing in the library follows it.
 *
 *  A camera has status words (16 bits each, by a 16-bit address, or by an index and an address) unless it is
 *  of the four oldest types; a camera with function 64 (Tavra_HasFunction()) also has registers (32 bits
 *  each, by a selector and a byte address). All values are little-endian on the wire and in the buffer. By
 *  the camera's convention bit 15 of a status address marks a write that takes effect: read 48, write 0x8030.
 *  After a write that alters geometry or timing, a 1 to status address 80 makes it take effect.
 *
 *  Each call is one control transfer or a row of them, is never retried, and may run beside the stream. The
 *  oldest types are the product types 773, 1541, 1797 and 2053.
 */
#ifndef TAVRA_API_REGISTERS_H
#define TAVRA_API_REGISTERS_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Gives the device handle of the USB access library (tavra_usbd.h), to share the device with the library. It
 *  stays the library's: do not close it.
 *
 *  \param handle camera
 *  \return device handle; 0 on failure
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API uint64_t Tavra_GetTavraUSBHandle(TavraHandle handle);

/** Reads the device's USB function address, as it was at open.
 *
 *  \param handle camera
 *  \param[out] address USB address, 1 to 127
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetUSBFunctionAddress(TavraHandle handle, uint8_t* address);

/** Reads status words, in index 0.
 *
 *  \param handle camera
 *  \param address first status address
 *  \param wordCount 16-bit words to read
 *  \param[out] buffer receives wordCount 16-bit words. A 32-bit value is two words, low word first
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types, no transfer is made;
 *      TAVRA_ERROR_CONTROL_TRANSFER the transfer failed; TAVRA_ERROR_INVALID_ARGUMENT no buffer, or more than
 *      32767 words
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetFPGAStatus(TavraHandle handle, uint16_t address, uint16_t wordCount,
                                        void* buffer);

/** Writes status words, in index 0.
 *
 *  \param handle camera
 *  \param address first status address
 *  \param wordCount 16-bit words to write
 *  \param buffer wordCount 16-bit words
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_GetFPGAStatus()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetFPGAStatus(TavraHandle handle, uint16_t address, uint16_t wordCount,
                                        const void* buffer);

/** Reads status words of a given index.
 *
 *  \param handle camera
 *  \param index which space of status words: 0 the settings, 129 the defect pixel list
 *  \param address first status address
 *  \param wordCount 16-bit words to read
 *  \param[out] buffer receives wordCount 16-bit words
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_GetFPGAStatus()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetFPGAStatusEx(TavraHandle handle, uint16_t index, uint16_t address,
                                          uint16_t wordCount, void* buffer);

/** Writes status words of a given index.
 *
 *  \param handle camera
 *  \param index which space of status words
 *  \param address first status address
 *  \param wordCount 16-bit words to write
 *  \param buffer wordCount 16-bit words
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_GetFPGAStatus()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetFPGAStatusEx(TavraHandle handle, uint16_t index, uint16_t address,
                                          uint16_t wordCount, const void* buffer);

/** Reads registers.
 *
 *  The read is cut into transfers of at most 64 bytes; the first that fails ends it, and the buffer holds
 *  what came before.
 *
 *  \param handle camera
 *  \param selector space of registers: 1 the control registers, 17 frame information
 *  \param address byte address, 24 bits
 *  \param[out] buffer receives size bytes
 *  \param size bytes, a multiple of 4; 0 succeeds without a transfer
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA the camera has no registers (function 64 absent), no transfer is made;
 *      TAVRA_ERROR_INVALID_ARGUMENT size is no multiple of 4; TAVRA_ERROR_CONTROL_TRANSFER a transfer failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetFPGAData2(TavraHandle handle, uint8_t selector, uint32_t address, void* buffer,
                                       uint16_t size);

/** Writes registers, cut as Tavra_GetFPGAData2(); what went out before a failing transfer stays written.
 *
 *  \param handle camera
 *  \param selector space of registers
 *  \param address byte address, 24 bits
 *  \param buffer size bytes
 *  \param size bytes, a multiple of 4; 0 succeeds without a transfer
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_GetFPGAData2()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetFPGAData2(TavraHandle handle, uint8_t selector, uint32_t address,
                                       const void* buffer, uint16_t size);

#ifdef __cplusplus
}
#endif
#endif
