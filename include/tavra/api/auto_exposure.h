/** \file auto_exposure.h
 *  Automatic exposure: the control loop over shutter and gain.
 *
 *  The library's loop runs on the capture thread. It measures the mean luminance of raw frames in a grid of 4
 *  x 4 cells, weighs the cells, averages some frames and compares with a target; then it moves shutter or
 *  gain by a bounded step, and leaves some frames out. Brightening moves the shutter first and the gain when
 *  the shutter is at its top, darkening the gain first and the shutter when the gain is at its bottom. It
 *  works on the mosaic transfer formats (TAVRA_TRANSFER_MOSAIC_, which mono cameras send too), not on mono,
 *  BGR and YCbCr ones, and never outside its ranges.
 *
 *  A loop at rest starts when the difference from the target is above tolerance + threshold, and goes on
 *  until it is not above tolerance. Cameras with capability word 1 bits 9 (gain) and 10 (shutter) can do the
 *  control themselves.
 *
 *  A step of the shutter goes to exposure * target / mean, but no further than exposure / (shutterSpeed + 1)
 *  and one unit more (a clock, or a line where the clock part has no effect). From the longest exposure of
 *  all on it becomes (0, 0). Where the clock part has no effect, the exposure goes to a multiple of
 *  shutterSpeed + 1 clocks; if that is no whole number of lines, the next decision takes the shutter to the
 *  longest exposure that fits a frame. A step of the gain does the same with the gain as a factor, by at
 *  least one setting value. While the shutter is below its top, the modes that move both hold the gain at its
 *  lowest. One decision costs one request at most, and only when something changes. Shutter and gain outside
 *  their ranges are first brought to the nearer end, which is a decision of its own.
 *
 *  Calls wait for a step of the loop in work. Where the camera takes part, TAVRA_ERROR_CONTROL_TRANSFER tells
 *  that it did not take or give a value.
 */
#ifndef TAVRA_API_AUTO_EXPOSURE_H
#define TAVRA_API_AUTO_EXPOSURE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Sets who controls the exposure.
 *
 *  On a camera with a control of its own, shutter and gain are read from it afterwards.
 *
 *  \param handle camera
 *  \param mode TAVRA_ALC_ code. The once modes go back to 0 at the first decision that changes nothing, also
 *      if shutter or gain is at its end
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no such mode, or a control in the camera that it does not have;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetALCMode(TavraHandle handle, uint8_t mode);

/** Reads who controls the exposure.
 *
 *  \param handle camera
 *  \param[out] mode TAVRA_ALC_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetALCMode(TavraHandle handle, uint8_t* mode);

/** Sets the speed of the library's loop.
 *
 *  \param handle camera
 *  \param shutterSpeed largest step of the shutter is the present exposure divided by this plus one
 *  \param gainSpeed largest step of the gain is the present gain factor divided by this plus one
 *  \param skipFrameCount frames left out after a decision; 3 at first
 *  \param averageFrameCount frames averaged for a decision, 0 acts as 1; 4 at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetALCControlSpeed(TavraHandle handle, uint8_t shutterSpeed, uint8_t gainSpeed,
                                             uint8_t skipFrameCount, uint8_t averageFrameCount);

/** Reads the speed of the library's loop.
 *
 *  \param handle camera
 *  \param[out] shutterSpeed divisor less one
 *  \param[out] gainSpeed divisor less one
 *  \param[out] skipFrameCount frames
 *  \param[out] averageFrameCount frames
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetALCControlSpeed(TavraHandle handle, uint8_t* shutterSpeed, uint8_t* gainSpeed,
                                             uint8_t* skipFrameCount, uint8_t* averageFrameCount);

/** Sets what the control aims at; 128, 5, 5 at first.
 *
 *  \param handle camera
 *  \param target mean luminance, 0 to 255; goes to the camera as well where it has a control of its own
 *  \param tolerance difference at which a running adjustment stops
 *  \param threshold added to tolerance for an adjustment to start
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetTargetBrightness(TavraHandle handle, uint8_t target, uint8_t tolerance,
                                              uint8_t threshold);

/** Reads what the control aims at.
 *
 *  \param handle camera
 *  \param[out] target mean luminance
 *  \param[out] tolerance levels
 *  \param[out] threshold levels
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetTargetBrightness(TavraHandle handle, uint8_t* target, uint8_t* tolerance,
                                              uint8_t* threshold);

/** Sets the weights of the cells for exposure; all 1 at first. All 0 measures a luminance of 0.
 *
 *  \param handle camera
 *  \param weights 16 bytes: the cells of the top row from left to right, then the next row
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetALCWeight(TavraHandle handle, const uint8_t* weights);

/** Reads the weights of the cells for exposure.
 *
 *  \param handle camera
 *  \param[out] weights receives 16 bytes, as Tavra_SetALCWeight()
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetALCWeight(TavraHandle handle, uint8_t* weights);

/** Sets the inner lines of the grid of 4 x 4 cells, for exposure and white balance; 2500, 5000, 7500 on both
 *  axes at first.
 *
 *  A line stands at value x size / 10000, truncated. One beyond the image is taken as its edge, and one
 *  before the line ahead of it as that line, so cells may be empty; empty cells measure 0. Cells behind
 *  an empty one are divided by the counts of pixels that were in force before, none on a new handle: for
 *  one cell over the whole image set all lines to 10000, not to 0. The values are stored as given, and
 *  count from the next frame on.
 *
 *  \param handle camera
 *  \param x 3 columns in ten-thousandths of the image width, ascending
 *  \param y 3 rows in ten-thousandths of the image height, ascending
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT a null pointer
 *  \threads any; waits for a frame that is being measured
 */
TAVRA_API TavraBool Tavra_SetControlArea(TavraHandle handle, const uint16_t* x, const uint16_t* y);

/** Reads the inner lines of the grid.
 *
 *  \param handle camera
 *  \param[out] x receives 3 values
 *  \param[out] y receives 3 values
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT a null pointer
 *  \threads any; waits for a frame that is being measured
 */
TAVRA_API TavraBool Tavra_GetControlArea(TavraHandle handle, uint16_t* x, uint16_t* y);

/** Sets the range of the gain for the automatic control; at first from the camera's default gain to its
 *  maximum, or as a camera that controls its gain or shutter tells. A camera that controls its gain is told.
 *
 *  \param handle camera
 *  \param minGain lowest setting value
 *  \param maxGain highest setting value, at most Tavra_GetMaxGain()
 *  \return 1, or 0. A range upside down (maxGain below minGain) is stored, and leaves
 *      TAVRA_ERROR_INVALID_ARGUMENT as last error with the result of the storing
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT maxGain above the maximum, nothing changes;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetGainControlRange(TavraHandle handle, uint16_t minGain, uint16_t maxGain);

/** Reads the range of the gain for the automatic control.
 *
 *  \param handle camera
 *  \param[out] minGain setting value
 *  \param[out] maxGain setting value
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetGainControlRange(TavraHandle handle, uint16_t* minGain, uint16_t* maxGain);

/** Sets the range of the shutter for the automatic control; as Tavra_SetShutterControlRange2() with 16 bits.
 *
 *  \param handle camera
 *  \param minLine shortest exposure, lines
 *  \param minClock shortest exposure, clocks
 *  \param maxLine longest exposure, lines
 *  \param maxClock longest exposure, clocks
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SetShutterControlRange2()
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetShutterControlRange(TavraHandle handle, uint16_t minLine, uint16_t minClock,
                                                 uint16_t maxLine, uint16_t maxClock);

/** Sets the range of the shutter for the automatic control. (0, 0) stands for the longest exposure that fits
 *  a frame, at both ends.
 *
 *  At first it begins at one clock, or one line where the clock part has no effect, and ends at (0, 0), or is
 *  as a camera that controls its gain or shutter tells. A camera that controls its shutter is told the lines.
 *
 *  \param handle camera
 *  \param minLine shortest exposure, lines
 *  \param minClock shortest exposure, clocks, 0 to Tavra_GetShutterMaxClock()
 *  \param maxLine longest exposure, lines; (0, 0) at first
 *  \param maxClock longest exposure, clocks, 0 to Tavra_GetShutterMaxClock()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT an end beyond the longest exposure, a clock above its maximum, or the
 *      shortest above the longest (where one of them is (0, 0), the clock part of the other is compared with
 *      the lines of that exposure): nothing changes; TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetShutterControlRange2(TavraHandle handle, uint32_t minLine, uint32_t minClock,
                                                  uint32_t maxLine, uint32_t maxClock);

/** Reads the range of the shutter for the automatic control, in 16 bits.
 *
 *  \param handle camera
 *  \param[out] minLine shortest exposure, lines
 *  \param[out] minClock shortest exposure, clocks
 *  \param[out] maxLine longest exposure, lines
 *  \param[out] maxClock longest exposure, clocks
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShutterControlRange(TavraHandle handle, uint16_t* minLine, uint16_t* minClock,
                                                 uint16_t* maxLine, uint16_t* maxClock);

/** Reads the range of the shutter for the automatic control.
 *
 *  \param handle camera
 *  \param[out] minLine shortest exposure, lines
 *  \param[out] minClock shortest exposure, clocks
 *  \param[out] maxLine longest exposure, lines
 *  \param[out] maxClock longest exposure, clocks
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetShutterControlRange2(TavraHandle handle, uint32_t* minLine, uint32_t* minClock,
                                                  uint32_t* maxLine, uint32_t* maxClock);

/** Sets the longest exposure of the automatic control, as clocks; the shortest follows where it would lie
 *  above.
 *
 *  \param handle camera
 *  \param clock exposure clock, up to Tavra_GetMaxLongExposureClock(); 0: the longest that fits a frame, and
 *      a shortest above that becomes 0 too
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT above the longest exposure, nothing changes;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAEMaxExposureClock(TavraHandle handle, uint32_t clock);

/** Sets the shortest exposure of the automatic control, as clocks; the longest follows where it would lie
 *  below.
 *
 *  \param handle camera
 *  \param clock exposure clock, up to Tavra_GetMaxLongExposureClock(); 0: the longest that fits a frame, and
 *      a longest below that becomes 0 too
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT above the longest exposure, nothing changes;
 *      TAVRA_ERROR_CONTROL_TRANSFER the camera did not take it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAEMinExposureClock(TavraHandle handle, uint32_t clock);

/** Reads the longest exposure of the automatic control, as clocks.
 *
 *  \param handle camera
 *  \param[out] clock exposure clock; 0: the longest that fits a frame
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAEMaxExposureClock(TavraHandle handle, uint32_t* clock);

/** Reads the shortest exposure of the automatic control, as clocks.
 *
 *  \param handle camera
 *  \param[out] clock exposure clock; 0: the longest that fits a frame
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAEMinExposureClock(TavraHandle handle, uint32_t* clock);

#ifdef __cplusplus
}
#endif
#endif
