/** \file camera_settings.h
 *  Settings in the camera that stand by themselves: black level, clamp, HDR, temperature, and others.
 *
 *  Each exists on some cameras only. A getter of an absent setting succeeds and gives 0, a setter fails with
 *  TAVRA_ERROR_INVALID_ARGUMENT, unless told otherwise. The unit of a value is the camera's.
 */
#ifndef TAVRA_API_CAMERA_SETTINGS_H
#define TAVRA_API_CAMERA_SETTINGS_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sends a setting command to the camera: it stores, restores or switches groups of its settings.
 *
 *  With bit 13 of the command on the product types 273 and 529, bits 10 to 12 are also written to its set-up
 *  memory. With bit 12 or 15 the camera has changed under the library: clock, transfer bits, exposure, mirror
 *  and geometry are then read again, as at open.
 *
 *  \param handle camera
 *  \param command command word, a code of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER a request failed; TAVRA_ERROR_TRANSFER_RUNNING bit 12 or 15 while the
 *      stream runs, nothing is sent
 *  \threads any, not in a callback; with bit 12 or 15 only while the stream is stopped
 */
TAVRA_API TavraBool Tavra_CameraSetting(TavraHandle handle, uint16_t command);

/** Sets the camera's mode word. The library sets 0 when it opens a camera and 1 when it closes it.
 *
 *  \param handle camera
 *  \param mode a code of the camera
 *  \return 1, also if the transfer failed
 *  \errors TAVRA_ERROR_LEGACY_CAMERA, TAVRA_ERROR_CONTROL_TRANSFER in the last error, with result 1
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetCameraMode(TavraHandle handle, uint16_t mode);

/** Reads the camera's temperature. Every sensor number reads the same place.
 *
 *  \param handle camera
 *  \param sensor 0, or 1 on cameras with a second sensor (capability word 16 bit 9)
 *  \param[out] temperature a reading in the camera's unit; 0 on failure
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no register pages, or sensor is 1 and it has no second
 *      sensor; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDeviceTemperature(TavraHandle handle, uint32_t sensor, uint32_t* temperature);

/** Reads the kind of HDR that the camera has.
 *
 *  \param handle camera
 *  \param[out] type a code of the camera; 0: none
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetHDRType(TavraHandle handle, uint32_t* type);

/** Reads the HDR parameters.
 *
 *  \param handle camera
 *  \param[out] parameters receives 32-bit words; may be null to ask for the size
 *  \param[in,out] size in: bytes at parameters, a multiple of 4; out: bytes that the camera holds (parameters
 *      null), or bytes read, cut to that
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no HDR on this camera, size null, or no multiple of 4;
 *      TAVRA_ERROR_CONTROL_TRANSFER a request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetHDRParameter(TavraHandle handle, uint32_t* parameters, uint32_t* size);

/** Writes the HDR parameters, word by word; the first failing write ends it.
 *
 *  \param handle camera
 *  \param parameters 32-bit words
 *  \param size bytes, a multiple of 4, at most what the camera holds; 0 succeeds at once
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no HDR on this camera, parameters null, size no multiple of 4 or too
 *      large; TAVRA_ERROR_CONTROL_TRANSFER a request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetHDRParameter(TavraHandle handle, const uint32_t* parameters, uint32_t size);

/** Reads the black level ahead of the converter.
 *
 *  \param handle camera
 *  \param[out] level 0 to Tavra_GetMaxAnalogBlackLevel(); 0 if the camera has none (capability word 8 bit 6)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAnalogBlackLevel(TavraHandle handle, uint16_t* level);

/** Sets the black level ahead of the converter. The value is not compared with the maximum.
 *
 *  \param handle camera
 *  \param level 0 to Tavra_GetMaxAnalogBlackLevel()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no such setting; TAVRA_ERROR_CONTROL_TRANSFER the
 *      request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAnalogBlackLevel(TavraHandle handle, uint16_t level);

/** Reads the highest analogue black level.
 *
 *  \param handle camera
 *  \param[out] level 255 if the camera does not tell, 0 if it has no such setting
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxAnalogBlackLevel(TavraHandle handle, uint16_t* level);

/** Reads the digital clamp: the level that black is held at.
 *
 *  \param handle camera
 *  \param[out] value 0 to Tavra_GetMaxDigitalClamp(); 0 if the camera has none (capability word 3 bit 7)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDigitalClamp(TavraHandle handle, uint16_t* value);

/** Sets the digital clamp. The value is not compared with the maximum.
 *
 *  \param handle camera
 *  \param value 0 to Tavra_GetMaxDigitalClamp()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no such setting; TAVRA_ERROR_CONTROL_TRANSFER the
 *      request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDigitalClamp(TavraHandle handle, uint16_t value);

/** Reads the highest digital clamp.
 *
 *  \param handle camera
 *  \param[out] value 255 if the camera does not tell, 0 if it has no such setting
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxDigitalClamp(TavraHandle handle, uint16_t* value);

/** Reads the sensor adjustment mode.
 *
 *  \param handle camera
 *  \param[out] mode a code of the camera; 0 if it has none (capability word 16 bit 10, and register pages)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAdjustmentMode(TavraHandle handle, uint32_t* mode);

/** Sets the sensor adjustment mode.
 *
 *  \param handle camera
 *  \param mode a code of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no such setting; TAVRA_ERROR_CONTROL_TRANSFER the
 *      request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAdjustmentMode(TavraHandle handle, uint32_t mode);

/** Reads whether the camera's reset switch works.
 *
 *  \param handle camera
 *  \param[out] enabled 1: it does
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no reset switch (capability word 4 bit 4), for this
 *      getter too; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetResetSwitchEnabled(TavraHandle handle, uint32_t* enabled);

/** Makes the camera's reset switch work or not.
 *
 *  \param handle camera
 *  \param enabled bit 0: 1: it works
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no reset switch; TAVRA_ERROR_CONTROL_TRANSFER the
 *      request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetResetSwitchEnabled(TavraHandle handle, uint32_t enabled);

/** Reads the priority mode register.
 *
 *  \param handle camera
 *  \param[out] mode the whole register; the mode stands in bits 2 and 3, so shift it to compare with what was
 *      set
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NOT_SUPPORTED the camera has no priority mode (function 0xA001B, and register pages);
 *      TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetPriorityMode(TavraHandle handle, uint32_t* mode);

/** Sets the priority mode; the register's other bits stay.
 *
 *  \param handle camera
 *  \param mode 0 to 3, its two low bits are used. Unlike the getter, not shifted
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_NOT_SUPPORTED the camera has no priority mode; TAVRA_ERROR_CONTROL_TRANSFER a request
 *      failed
 *  \threads any; reads, changes and writes a register without a lock, so serialise with other changes of
 *      priority mode
 */
TAVRA_API TavraBool Tavra_SetPriorityMode(TavraHandle handle, uint32_t mode);

#ifdef __cplusplus
}
#endif
#endif
