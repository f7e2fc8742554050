/** \file exposure.h
 *  Exposure: the shutter in lines and clocks, as one number of clocks, and as time.
 *
 *  An exposure is a pair: whole lines, and clocks of a further line (cameras with bit 0 of
 *  Tavra_GetEnableShutterSpeed() only; on the others the clock part has no effect). As one number of clocks
 *  it is `(clocks a line) * line + clock`, with the clocks of an exposure line: Tavra_GetShutterMaxClock() +
 *  1. The pair (0, 0) and the clock 0 stand for the longest exposure that fits a frame,
 *  Tavra_GetMaxShortExposureClock(). Longer ones up to Tavra_GetMaxLongExposureClock() slow the frame rate
 *  down.
 *
 *  Settings are kept by the library and written to the camera when they are set; with a control in the camera
 *  (TAVRA_ALC_CAMERA_SHUTTER, TAVRA_ALC_CAMERA_GAIN) they are read back from it. They are also read at open
 *  and whenever the image size or the like changes. If the camera does not take a write, the value stays in
 *  memory all the same. Calls wait for a step of the automatic control in work.
 *  TAVRA_ERROR_CONTROL_TRANSFER is the error of every write and read that fails.
 */
#ifndef TAVRA_API_EXPOSURE_H
#define TAVRA_API_EXPOSURE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets the exposure as lines and clocks, and sends the frame timing, which may follow from it.
 *
 *  \param handle camera
 *  \param line lines, 0 to those of the longest exposure; there the clock may be above that exposure's, and
 *      has no effect
 *  \param clock clocks, 0 to Tavra_GetShutterMaxClock()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT line or clock out of range, nothing changes;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetShutterSpeed(TavraHandle handle, uint16_t line, uint16_t clock);

/** Sets the exposure as lines and clocks, for more than 65535 lines.
 *
 *  \param handle camera
 *  \param line lines, 0 to those of the longest exposure
 *  \param clock clocks, 0 to Tavra_GetShutterMaxClock()
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SetShutterSpeed()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetShutterSpeed2(TavraHandle handle, uint32_t line, uint32_t clock);

/** Reads the exposure as lines and clocks. From the lines of the longest exposure on, that pair is given.
 *
 *  \param handle camera
 *  \param[out] line lines, their low 16 bits; 0 on failure; may be null
 *  \param[out] clock clocks; 0 on failure; may be null
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShutterSpeed(TavraHandle handle, uint16_t* line, uint16_t* clock);

/** Reads the exposure as lines and clocks, for more than 65535 lines.
 *
 *  \param handle camera
 *  \param[out] line lines; 0 on failure; may be null
 *  \param[out] clock clocks; 0 on failure; may be null
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShutterSpeed2(TavraHandle handle, uint32_t* line, uint32_t* clock);

/** Sets the exposure as one number of clocks, split as `line = clock / c`, `clock % c` with c clocks an
 *  exposure line.
 *
 *  \param handle camera
 *  \param clock clocks, 0 to Tavra_GetMaxLongExposureClock(); 0: the longest that fits a frame
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SetShutterSpeed()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetExposureClock(TavraHandle handle, uint32_t clock);

/** Reads the exposure as one number of clocks.
 *
 *  \param handle camera
 *  \param[out] clock clocks, at most Tavra_GetMaxLongExposureClock(); 0: the longest that fits a frame
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera could not be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetExposureClock(TavraHandle handle, uint32_t* clock);

/** Reads the highest clock part: the clocks of an exposure line less one.
 *
 *  \param handle camera
 *  \param[out] clock clocks
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShutterMaxClock(TavraHandle handle, uint32_t* clock);

/** Reads the longest exposure.
 *
 *  \param handle camera
 *  \param[out] clock clocks
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxLongExposureClock(TavraHandle handle, uint32_t* clock);

/** Reads the longest exposure that fits a frame.
 *
 *  \param handle camera
 *  \param[out] clock clocks
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxShortExposureClock(TavraHandle handle, uint32_t* clock);

/** Reads what the camera's shutter can do.
 *
 *  \param handle camera
 *  \param[out] mask bit 0: the clock part takes effect; the other bits are the camera's
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetEnableShutterSpeed(TavraHandle handle, uint16_t* mask);

/** Converts a time to an exposure clock.
 *
 *  With F the clock of Tavra_GetClock() in Hz, L the clocks a line of Tavra_GetFrameClock(), B the exposure
 *  base clock in Hz (100 MHz unless the camera tells) and M the minimum exposure clock (1426 unless it
 *  tells), for t seconds by product type:
 *
 *  - 273, 529: clock trunc((F t + b) / a); time (a n - b) / F, with a and b told below
 *  - 274, 276, 277, 530, 533, 2069, 2326, 3448, 4118, 16385 to 16388: clock trunc(F t / L); time L n / F
 *  - 1811, 2067, 4374, 4630, 4886, 5142, 9494, 9750, 10006, 10262: clock max(1, trunc((t - 1.373e-5) F / L)),
 *    1 for t up to 1.373e-5; time L n / F + 1.373e-5
 *  - 1302, 1558, 1814, 2070, 5398, 5654, 5910, 6166, 6422, 8214, 8470, 8726, 8982, 9238, with t at least tm =
 *    1e-6: clock trunc(t B + 0.5) for t up to M / B, above that trunc(k B L / F + M) with k = trunc((t - M /
 *    B) F / L + 0.5); time max(tm, n / B) for n up to M, above that ceil((n - M) F / (B L)) L / F + M / B
 *  - 278, 534, 790, 1046: the same with tm = 1.5e-6
 *  - 275, 531, 787, 1043, 1299, 1555: clock trunc(t * 1000000 + 0.5); time max(2.2e-5, n / 1000000)
 *  - 789, 1045, 1301, 1557: as 1302 for a same-PID word of 4, 5 or 128, else as 1811
 *  - all others: clock trunc(F t); time n / F
 *
 *  For the first, with h and v horizontal and vertical binning (at most 2 in the table), w the image width,
 *  T[v][h] = {450, 430, 420}, {796, 776, 766}, {1488, 1468, 1458} and q = v, 3 for v above 1: a = 2
 *  max(T[v][h] + w / 2, 346 q + 486), b = 416 q + 426.
 *
 *  \param handle camera
 *  \param seconds exposure time
 *  \param[out] clock exposure clock, at most Tavra_GetMaxLongExposureClock(); a result below 2 becomes 1.
 *      Unchanged if the camera's timing could not be read
 *  \return 1, also if the camera's timing could not be read
 *  \errors none of its own; what could not be read is left as last error
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetExposureClockFromTime(TavraHandle handle, float seconds, uint32_t* clock);

/** Converts an exposure clock to a time, by the table of Tavra_GetExposureClockFromTime().
 *
 *  \param handle camera
 *  \param clock exposure clock; limited to Tavra_GetMaxLongExposureClock(), 0 stands for
 *      Tavra_GetMaxShortExposureClock()
 *  \param[out] seconds exposure time. Unchanged if the camera's timing could not be read
 *  \return 1, also if the camera's timing could not be read
 *  \errors none of its own; what could not be read is left as last error
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetExposureTimeFromClock(TavraHandle handle, uint32_t clock, float* seconds);

#ifdef __cplusplus
}
#endif
#endif
