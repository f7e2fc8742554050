/** \file gain.h
 *  Analogue and digital gain.
 *
 *  A gain is a setting value of the camera; the scale to decibels and to a factor depends on the camera.
 *  Values are kept, written and read back like exposures (exposure.h).
 */
#ifndef TAVRA_API_GAIN_H
#define TAVRA_API_GAIN_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the analogue gain.
 *
 *  \param handle camera
 *  \param gain setting value, 0 to Tavra_GetMaxGain()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT above the maximum, nothing changes; TAVRA_ERROR_CONTROL_TRANSFER the
 *      camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetGain(TavraHandle handle, uint16_t gain);

/** Reads the analogue gain; with the control in the camera, from the camera.
 *
 *  \param handle camera
 *  \param[out] gain setting value
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetGain(TavraHandle handle, uint16_t* gain);

/** Reads the highest analogue gain.
 *
 *  \param handle camera
 *  \param[out] gain setting value
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxGain(TavraHandle handle, uint16_t* gain);

/** Converts an analogue gain to decibels.
 *
 *  The camera's class is the sum of 1 for capability word 1 bit 0, 2 for word 3 bit 1 and 4 for word 3 bit 2;
 *  the oldest types are class 0. For the setting value v:
 *
 *  | class | decibels |
 *  |---|---|
 *  | 0, 6, 7 | 0.132 v - 2.36 |
 *  | 1 | 0.07038 (v + 128) + 2.0 |
 *  | 2 | 20 log10((v + 8) * 8 / 64) for v below 21, else 20 log10((v - 12) * 28 / 64) |
 *  | 3 | 20 log10(2^((v >> 6) & 3) * ((v & 63) * 0.015625 + 1)) |
 *  | 4 | 0.1 v |
 *  | 5 | 0.0351 v |
 *
 *  \param handle camera
 *  \param value setting value; not compared with the maximum
 *  \param[out] decibels dB
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetGainDBFromSettingValue(TavraHandle handle, uint16_t value, float* decibels);

/** Sets the digital gain. The value is not compared with the maximum.
 *
 *  \param handle camera
 *  \param gain setting value, 0 to Tavra_GetMaxDigitalGain()
 *  \return 1, or 0: on the oldest types without a last error (the value is kept, the camera has none to set)
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDigitalGain(TavraHandle handle, uint16_t gain);

/** Reads the digital gain.
 *
 *  \param handle camera
 *  \param[out] gain setting value
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDigitalGain(TavraHandle handle, uint16_t* gain);

/** Reads the highest digital gain.
 *
 *  \param handle camera
 *  \param[out] gain setting value; 511 unless the camera tells otherwise
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxDigitalGain(TavraHandle handle, uint16_t* gain);

/** Converts a digital gain to a factor.
 *
 *  10^(v / 200) on the product types 2326, 3448, 4118, 16385 to 16388, and with function 0x90007 and a
 *  same-PID word whose high byte is 28; else v / 64 + 1 with function 0x90007; else v / 64.
 *
 *  \param handle camera
 *  \param value setting value; limited to the maximum
 *  \param[out] times factor; 1.0 if the camera has no digital gain (function 257)
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDigitalGainTimesFromSettingValue(TavraHandle handle, uint16_t value,
                                                              float* times);

/** Converts a factor to a digital gain.
 *
 *  On the product types 2326, 3448, 4118, 16385 to 16388, and with a same-PID word whose high byte is 28:
 *  trunc(2 log10(x) + 0.5), which is not the inverse of the other direction. Else g = trunc(64 x + 0.5); with
 *  function 0x90007 g - 64, 0 if g is at most 64.
 *
 *  \param handle camera
 *  \param times factor x
 *  \param[out] value setting value, limited to the maximum; 0 if the camera has no digital gain (function
 *      257)
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDigitalGainSettingValueFromGainTimes(TavraHandle handle, float times,
                                                                  uint16_t* value);

#ifdef __cplusplus
}
#endif
#endif
