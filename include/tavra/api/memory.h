/** \file memory.h
 *  What the camera remembers: serial number, user ID, user memory; and its I2C buses.
 *
 *  The camera's memory keeps its content without power. Each call is a transfer that may take milliseconds;
 *  it may run beside the stream. An ID record is a 32-bit number and a text of at most 250 bytes, its
 *  terminating zero included, in UTF-16 or in the system code page. A longer text is cut to 248 bytes in
 *  UTF-16 and to 249 in the system code page, without a terminating zero.
 */
#ifndef TAVRA_API_MEMORY_H
#define TAVRA_API_MEMORY_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Reads the serial record with its text in the system code page.
 *
 *  A text that was stored in UTF-16 is converted. It is cut to the buffer; a text as long as the buffer comes
 *  without a terminating zero only if it was stored so.
 *
 *  \param handle camera
 *  \param[out] id receives the number
 *  \param[out] text receives the text; cleared first
 *  \param size bytes at text
 *  \return 1, also if the camera's memory could not be read: the last error is then
 *      TAVRA_ERROR_CONTROL_TRANSFER, and id is 0 and text empty
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER in the last error, with result 1: the memory could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadCameraSerialIDA(TavraHandle handle, uint32_t* id, char* text, uint32_t size);

/** Reads the serial record with its text in UTF-16. A text that was stored in the system code page is
 *  converted, into at most size / 2 - 1 characters.
 *
 *  \param handle camera
 *  \param[out] id receives the number
 *  \param[out] text receives the text; cleared first
 *  \param size bytes at text
 *  \return as Tavra_ReadCameraSerialIDA()
 *  \errors as Tavra_ReadCameraSerialIDA()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadCameraSerialIDW(TavraHandle handle, uint32_t* id, TavraWChar* text,
                                              uint32_t size);

/** Reads the user record, by which Tavra_Open() finds a camera, with its text in the system code page.
 *
 *  \param handle camera
 *  \param[out] id receives the number
 *  \param[out] text receives the text; cleared first
 *  \param size bytes at text
 *  \return as Tavra_ReadCameraSerialIDA()
 *  \errors as Tavra_ReadCameraSerialIDA()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadCameraUserIDA(TavraHandle handle, uint32_t* id, char* text, uint32_t size);

/** Reads the user record with its text in UTF-16.
 *
 *  \param handle camera
 *  \param[out] id receives the number
 *  \param[out] text receives the text; cleared first
 *  \param size bytes at text
 *  \return as Tavra_ReadCameraSerialIDA()
 *  \errors as Tavra_ReadCameraSerialIDA()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadCameraUserIDW(TavraHandle handle, uint32_t* id, TavraWChar* text,
                                            uint32_t size);

/** Writes the serial record. It is the maker's number: applications write the user record.
 *
 *  \param handle camera
 *  \param id number
 *  \param text text in the system code page, up to its zero or size; may be null: no text
 *  \param size bytes at text, 0: no text. More than 250 bytes are cut to 249
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the memory could not be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteCameraSerialIDA(TavraHandle handle, uint32_t id, const char* text,
                                               uint32_t size);

/** Writes the serial record with a text in UTF-16.
 *
 *  The text ends after the first character whose low byte is zero, or at size.
 *
 *  \param handle camera
 *  \param id number
 *  \param text text; may be null: no text
 *  \param size bytes at text, 0: no text. More than 250 bytes are cut to 248
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the memory could not be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteCameraSerialIDW(TavraHandle handle, uint32_t id, const TavraWChar* text,
                                               uint32_t size);

/** Writes the user record, by which Tavra_Open() finds a camera.
 *
 *  \param handle camera
 *  \param id number
 *  \param text text in the system code page, up to its zero or size; may be null: no text
 *  \param size bytes at text, 0: no text. More than 250 bytes are cut to 249
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the memory could not be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteCameraUserIDA(TavraHandle handle, uint32_t id, const char* text,
                                             uint32_t size);

/** Writes the user record with a text in UTF-16, which ends as for Tavra_WriteCameraSerialIDW().
 *
 *  \param handle camera
 *  \param id number
 *  \param text text; may be null: no text
 *  \param size bytes at text, 0: no text. More than 250 bytes are cut to 248
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the memory could not be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteCameraUserIDW(TavraHandle handle, uint32_t id, const TavraWChar* text,
                                             uint32_t size);

/** Reads the 1024 bytes that are the application's own.
 *
 *  \param handle camera
 *  \param[out] buffer receives the bytes
 *  \param offset first byte, 0 to 1023
 *  \param size bytes, at least 1; what runs past byte 1023 is cut, and that part of the buffer stays as it is
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT offset above 1023, or size 0; TAVRA_ERROR_CONTROL_TRANSFER the memory
 *      could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadUserMemory(TavraHandle handle, void* buffer, uint16_t offset, uint16_t size);

/** Writes the 1024 bytes that are the application's own.
 *
 *  \param handle camera
 *  \param buffer the bytes
 *  \param offset first byte, 0 to 1023
 *  \param size bytes, at least 1; what runs past byte 1023 is cut
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT offset above 1023, or size 0; TAVRA_ERROR_CONTROL_TRANSFER the memory
 *      could not be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteUserMemory(TavraHandle handle, const void* buffer, uint16_t offset,
                                          uint16_t size);

/** Reads from a device on one of the camera's I2C buses, with an 8-bit register address.
 *
 *  \param handle camera
 *  \param bus bus number
 *  \param device device address; 0x51 is reserved
 *  \param reg register address
 *  \param count bytes
 *  \param[out] buffer receives count bytes
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_RESERVED_I2C device is 0x51, no transfer is made; TAVRA_ERROR_CONTROL_TRANSFER the
 *      transfer failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadI2CB(TavraHandle handle, uint8_t bus, uint8_t device, uint8_t reg,
                                   uint8_t count, void* buffer);

/** Writes to a device on one of the camera's I2C buses, with an 8-bit register address.
 *
 *  \param handle camera
 *  \param bus bus number
 *  \param device device address; 0x51 is reserved
 *  \param reg register address
 *  \param count bytes
 *  \param buffer count bytes
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_ReadI2CB()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteI2CB(TavraHandle handle, uint8_t bus, uint8_t device, uint8_t reg,
                                    uint8_t count, const void* buffer);

/** Reads from a device on one of the camera's I2C buses, with a 16-bit register address.
 *
 *  \param handle camera
 *  \param bus bus number
 *  \param device device address; 0x51 is reserved
 *  \param reg register address
 *  \param count bytes
 *  \param[out] buffer receives count bytes
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_ReadI2CB()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ReadI2CW(TavraHandle handle, uint8_t bus, uint8_t device, uint16_t reg,
                                   uint16_t count, void* buffer);

/** Writes to a device on one of the camera's I2C buses, with a 16-bit register address.
 *
 *  \param handle camera
 *  \param bus bus number
 *  \param device device address; 0x51 is reserved
 *  \param reg register address
 *  \param count bytes
 *  \param buffer count bytes
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_ReadI2CB()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_WriteI2CW(TavraHandle handle, uint8_t bus, uint8_t device, uint16_t reg,
                                    uint16_t count, const void* buffer);

#ifdef __cplusplus
}
#endif
#endif
