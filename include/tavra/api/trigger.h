/** \file trigger.h
 *  Triggers, exposure modes and the sensor's shutter.
 *
 *  Cameras have one of two generations of trigger control: a trigger word (a pair of status words at 48), or
 *  registers in pages. The functions with a selector present one model over both; Tavra_SetTriggerMode() and
 *  Tavra_GetTriggerMode() are the word itself.
 *
 *  | bits of the trigger word | meaning |
 *  |---|---|
 *  | 0 to 1 | trigger: 0 off, 1 first mode, 2 second mode (trigger of the read-out) |
 *  | 6 | source of TAVRA_TRIGGER_SELECTOR_READOUT: clear 1, set 2 |
 *  | 10 to 11 | trigger source |
 *  | 12 to 13 | exposure mode: 0 free, 1 trigger width, 2 sub trigger |
 *  | 16 to 17 | sensor shutter mode |
 *
 *  Sources are inputs of the camera, numbered by it. No trigger state is kept in the library: each call asks
 *  or tells the camera, and may run beside the stream. A setter that changes part of the word reads, changes
 *  and writes it without a lock: calls that change the trigger of one camera from several threads are to be
 *  serialised by the application. The stream looks at the trigger word once, at its start
 *  (Tavra_SetNoiseReductionMode()).
 *
 *  Every function here that makes a request can fail with TAVRA_ERROR_CONTROL_TRANSFER if the transfer fails,
 *  and on the oldest types (773, 1541, 1797, 2053) with TAVRA_ERROR_LEGACY_CAMERA if it needs a status word.
 */
#ifndef TAVRA_API_TRIGGER_H
#define TAVRA_API_TRIGGER_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Writes the trigger word, then reads the scan geometry again.
 *
 *  \param handle camera
 *  \param mode trigger word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the write, or the reading of the geometry, failed;
 *      TAVRA_ERROR_LEGACY_CAMERA one of the oldest types
 *  \threads any; serialise with other changes of the trigger
 */
TAVRA_API TavraBool Tavra_SetTriggerMode(TavraHandle handle, uint32_t mode);

/** Reads the trigger word.
 *
 *  \param handle camera
 *  \param[out] mode trigger word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed; TAVRA_ERROR_LEGACY_CAMERA one of the oldest types
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTriggerMode(TavraHandle handle, uint32_t* mode);

/** Tells whether the camera has a trigger selector.
 *
 *  Selector 0 needs function 256, selector 1 function 0x9000E, selectors 2 and 3 function 1. Selector 4
 *  exists on the oldest types and where capability word 1 bit 13 is clear.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code, or any other number
 *  \return 1: it has, 0: it has not. A failure looks like 0: check the handle first
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_IsTriggerSelectorSupported(TavraHandle handle, uint32_t selector);

/** Turns a trigger on or off.
 *
 *  On a camera with register pages the change is followed by clearing the camera's buffer and applying the
 *  change. Without a register set for each selector (capability word 18 bit 12), selector 3 takes effect in
 *  exposure mode 3 only.
 *
 *  On a camera with a trigger word: turning selector 4 on makes the low two bits 2, turning it off makes a 2
 *  a 1; turning another selector on makes a 0 a 1, turning it off makes the bits 0.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code
 *  \param value 1: on, 0: off
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera lacks the selector, value above 1, or selector 4 on a
 *      camera with register pages; TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any; serialise with other changes of the trigger
 */
TAVRA_API TavraBool Tavra_SetTriggerMode2(TavraHandle handle, uint32_t selector, uint32_t value);

/** Reads whether a trigger is on.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code
 *  \param[out] value 1: on. 0 for a selector that the exposure mode in force leaves out
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no register set for this selector, or selector 1 on a camera with a
 *      trigger word; TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTriggerMode2(TavraHandle handle, uint32_t selector, uint32_t* value);

/** Sets what a trigger listens to.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code
 *  \param source input of the camera: 0 to 5 with register pages (0 to 2 where selectors share a register), 0
 *      to 2 with a trigger word, where selector 4 knows only 2 and, for any other value, 1
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera lacks the selector, source out of range, or selector 1 on
 *      a camera with a trigger word; TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any; serialise with other changes of the trigger
 */
TAVRA_API TavraBool Tavra_SetTriggerSource(TavraHandle handle, uint32_t selector, uint32_t source);

/** Reads what a trigger listens to.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code
 *  \param[out] source source number; for selector 4 of a trigger word 1 or 2; 0 for selector 1 of a trigger
 *      word, and for selector 3 outside exposure mode 3
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no such selector, or selector 4 on a camera with register pages;
 *      TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTriggerSource(TavraHandle handle, uint32_t selector, uint32_t* source);

/** Sets the time from the trigger to the exposure. There is one delay for all selectors.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code that the camera has
 *  \param delay in the camera's unit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera lacks the selector; TAVRA_ERROR_CONTROL_TRANSFER,
 *      TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetTriggerDelay(TavraHandle handle, uint32_t selector, uint32_t delay);

/** Reads the time from the trigger to the exposure.
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code that the camera has
 *  \param[out] delay in the camera's unit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera lacks the selector; TAVRA_ERROR_CONTROL_TRANSFER,
 *      TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTriggerDelay(TavraHandle handle, uint32_t selector, uint32_t* delay);

/** Sets one of the six trigger timings.
 *
 *  \param handle camera
 *  \param index 0 to 5; any other number acts as 0, which is also the trigger delay
 *  \param value in the camera's unit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetTriggerTiming(TavraHandle handle, uint32_t index, uint32_t value);

/** Reads one of the six trigger timings.
 *
 *  \param handle camera
 *  \param index 0 to 5; any other number acts as 0
 *  \param[out] value in the camera's unit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTriggerTiming(TavraHandle handle, uint32_t index, uint32_t* value);

/** Fires the main trigger by software.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SoftTrigger(TavraHandle handle);

/** Fires the sub trigger by software.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SoftSubTrigger(TavraHandle handle);

/** Fires the trigger of the read-out by software.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_TriggerReadOut(TavraHandle handle);

/** Fires the trigger of a selector by software.
 *
 *  With a trigger word, selectors 0 and 2 are Tavra_SoftTrigger(), 3 Tavra_SoftSubTrigger(), 4
 *  Tavra_TriggerReadOut().
 *
 *  \param handle camera
 *  \param selector TAVRA_TRIGGER_SELECTOR_ code
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT selector 1 on a camera with a trigger word, or no such selector;
 *      TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_TriggerSoftware(TavraHandle handle, uint32_t selector);

/** Sets the camera's counter to 0.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ResetCounter(TavraHandle handle);

/** Sets the exposure mode.
 *
 *  On a camera with register pages the change is applied and the camera's buffer cleared. With a trigger
 *  word, mode 0 also sets the exposure clock 0.
 *
 *  \param handle camera
 *  \param mode TAVRA_EXPOSURE_MODE_ code. TAVRA_EXPOSURE_MODE_SUB_TRIGGER needs product type 2310, 4102,
 *      4358, 4614, 5382 or 5638 of hardware revision 15, or capability word 0 bit 1
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT mode above 3, or mode 3 on a camera without it;
 *      TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any; serialise with other changes of the trigger
 */
TAVRA_API TavraBool Tavra_SetExposureMode(TavraHandle handle, uint32_t mode);

/** Reads the exposure mode. With a trigger word, free-running is mode 1 if the exposure clock is not 0, else
 *  0; a word with both bits of the mode is told as 1.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_EXPOSURE_MODE_ code
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetExposureMode(TavraHandle handle, uint32_t* mode);

/** Sets the sensor's shutter mode.
 *
 *  Which modes exist follows from two capabilities, A (capability word 1 bit 12) and B (capability word 4 bit
 *  8): neither gives mode 2 alone, and setting it does nothing; A gives 0 and 1; B gives 0 and 2; both give
 *  0, 1 and 2.
 *
 *  \param handle camera
 *  \param mode 0, 1 or 2, codes of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera lacks the mode; TAVRA_ERROR_CONTROL_TRANSFER,
 *      TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any; serialise with other changes of the trigger
 */
TAVRA_API TavraBool Tavra_SetSensorShutterMode(TavraHandle handle, uint32_t mode);

/** Reads the sensor's shutter mode.
 *
 *  \param handle camera
 *  \param[out] mode 0, 1 or 2; 2 on a camera that cannot change it
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER, TAVRA_ERROR_LEGACY_CAMERA as told above
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSensorShutterMode(TavraHandle handle, uint32_t* mode);

#ifdef __cplusplus
}
#endif
#endif
