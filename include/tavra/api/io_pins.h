/** \file io_pins.h
 *  The camera's I/O pins, switches and LEDs.
 *
 *  A pin word has one bit a pin, bit n for pin n. What modes and polarities mean is the camera's matter. All
 *  calls may run beside the stream; each is one request.
 */
#ifndef TAVRA_API_IO_PINS_H
#define TAVRA_API_IO_PINS_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Reads which I/O pins the camera has.
 *
 *  \param handle camera
 *  \param[out] mask bit n: pin n exists. The camera's own mask where it has one (capability word 4 bit 2),
 *      else 15, and 0 on the oldest types
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetIOExistence(TavraHandle handle, uint32_t* mask);

/** Reads the direction of the pins.
 *
 *  \param handle camera
 *  \param[out] value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetIOPinDirection(TavraHandle handle, uint32_t* value);

/** Sets the direction of the pins.
 *
 *  \param handle camera
 *  \param value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetIOPinDirection(TavraHandle handle, uint16_t value);

/** Reads the polarity of the pins.
 *
 *  \param handle camera
 *  \param[out] value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetIOPinPolarity(TavraHandle handle, uint32_t* value);

/** Sets the polarity of the pins.
 *
 *  \param handle camera
 *  \param value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetIOPinPolarity(TavraHandle handle, uint16_t value);

/** Reads the level of the pins.
 *
 *  \param handle camera
 *  \param[out] value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetIOPinStatus(TavraHandle handle, uint32_t* value);

/** Sets the level of output pins.
 *
 *  \param handle camera
 *  \param value pin word
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetIOPinStatus(TavraHandle handle, uint16_t value);

/** Reads what a pin is used for.
 *
 *  \param handle camera
 *  \param pin 0 to 3
 *  \param[out] mode a code of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT pin above 3, no request is made; TAVRA_ERROR_LEGACY_CAMERA one of the
 *      oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetIOPinMode(TavraHandle handle, uint32_t pin, uint32_t* mode);

/** Sets what a pin is used for.
 *
 *  \param handle camera
 *  \param pin 0 to 3
 *  \param mode a code of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT pin above 3, no request is made; TAVRA_ERROR_LEGACY_CAMERA one of the
 *      oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetIOPinMode(TavraHandle handle, uint32_t pin, uint16_t mode);

/** Reads the camera's switches.
 *
 *  \param handle camera
 *  \param[out] status a word of the camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_LEGACY_CAMERA one of the oldest types; TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSwStatus(TavraHandle handle, uint32_t* status);

/** Reads which LEDs the camera has.
 *
 *  \param handle camera
 *  \param[out] mask bit n for LED n: 3 if the camera reports capability word 0 bit 5 and no other LED, 1 if
 *      it reports word 4 bit 12 and no other; 0 for every other combination with word 4 bits 13 to 15, and on
 *      the oldest types
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetLEDExistence(TavraHandle handle, uint32_t* mask);

#ifdef __cplusplus
}
#endif
#endif
