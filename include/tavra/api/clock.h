/** \file clock.h
 *  Pixel clock, frame timing and frame rate.
 */
#ifndef TAVRA_API_CLOCK_H
#define TAVRA_API_CLOCK_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Reads the pixel clock in force.
 *
 *  \param handle camera
 *  \param[out] mode clock mode; 0 on cameras of firmware revision below 3
 *  \param[out] clock Hz
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetClock(TavraHandle handle, uint32_t* mode, uint32_t* clock);

/** Sets the pixel clock and reads back what the camera made of it.
 *
 *  \param handle camera
 *  \param mode TAVRA_CLOCK_MODE_DEFAULT, a bit of the mask of Tavra_GetEnableClock(), or
 *      TAVRA_CLOCK_MODE_FREE
 *  \param clock Hz; for the free mode within the range of Tavra_GetEnableClock(). Sent in the other modes
 *      too, where the camera may ignore it
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT mode is not 0 and not in the mask, or a free clock is out of range;
 *      TAVRA_ERROR_RECORDING a recording exists; TAVRA_ERROR_CONTROL_TRANSFER the request failed or its
 *      answer had a wrong length
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetClock(TavraHandle handle, uint32_t mode, uint32_t clock);

/** Reads the length of a frame.
 *
 *  \param handle camera
 *  \param[out] lines lines a frame, blanking included
 *  \param[out] clocks clocks a line, blanking included
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetFrameClock(TavraHandle handle, uint16_t* lines, uint16_t* clocks);

/** Computes the frame rate: read clock divided by clocks a frame.
 *
 *  The camera tells both where capability word 1 bit 4 is set. Else they are the clock of Tavra_GetClock(),
 *  and clocks a line times lines a frame; in the scan modes 4 and 32 times the lines of exposure, if these
 *  are more. On a camera with the capability but without register pages a frame counts 65536 clocks.
 *
 *  \param handle camera
 *  \param[out] fps frames a second; 0 if the clock is 0
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER a request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetOutputFPS(TavraHandle handle, float* fps);

/** Reads the extra blanking lines that slow the frame rate down.
 *
 *  \param handle camera
 *  \param[out] vBlank lines; 0 if the camera has no such setting (capability word 1 bit 5)
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetVBlankForFPS(TavraHandle handle, uint32_t* vBlank);

/** Sets the extra blanking lines that slow the frame rate down, and reads the frame timing again.
 *
 *  \param handle camera
 *  \param vBlank lines, 0 to Tavra_GetMaxVBlankForFPS()
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT the camera has no such setting and vBlank is not 0, or vBlank is
 *      above 65535 on a camera without register pages; TAVRA_ERROR_CONTROL_TRANSFER a request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetVBlankForFPS(TavraHandle handle, uint32_t vBlank);

/** Reads the highest value of Tavra_SetVBlankForFPS().
 *
 *  \param handle camera
 *  \param[out] vBlank lines; 0 if the camera has no such setting, 2035 if it does not tell
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_CONTROL_TRANSFER the request failed
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetMaxVBlankForFPS(TavraHandle handle, uint32_t* vBlank);

#ifdef __cplusplus
}
#endif
#endif
