/** \file settings_file.h
 *  Setting files: everything that was set on a camera, in a text file of sections and keys.
 *
 *  The file is UTF-16 text with a byte-order mark. The names of its sections end with the camera's product
 *  type in hexadecimal (and the same-PID word if it is not 0), so one file can hold the settings of several
 *  models; other content in it stays. Every value is read and written by the functions of this interface: a
 *  file can do what they can do.
 *
 *  It holds movie quality, clock, image size with regions, skipping and binning, preview window, mask and
 *  destination, automatic exposure and its ranges and weights, gains, shutter, mirror, rotation,
 *  magnification, aspect, display mode, colour key, alpha channel, preview pixel format, sharpness, gamma
 *  curves, white balance, interpolation, hue and saturation, colour matrix, chroma suppression, camera gamma,
 *  V-blank, defect pixel mode, digital clamp, analogue black level, adjustment mode and HDR parameters, as
 *  far as the camera has them. Colour settings of a mono-like camera are left out.
 */
#ifndef TAVRA_API_SETTINGS_FILE_H
#define TAVRA_API_SETTINGS_FILE_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Saves the camera's settings. Of a file that exists the keys get their new values; other sections,
 *  comments, order, line ends and encoding stay.
 *
 *  The camera is read first. The file is then read once and replaced whole: a crash at any moment, or a
 *  failure, leaves the old one. Several processes that save to one file at the same moment come one behind
 *  the other; all their sections are in it afterwards. A preview window that is closed meanwhile counts as
 *  none, here as in a load and a reset.
 *
 *  \param handle camera
 *  \param fileName name in UTF-16
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_FILE_NAME null or empty; the code of a
 *      getter that failed; the operating system's code if the file cannot be read or written; 170 another
 *      process has been saving to it for five seconds
 *  \threads any, not in a callback; the camera's settings must not change meanwhile
 */
TAVRA_API TavraBool Tavra_SaveSettingFileW(TavraHandle handle, const TavraWChar* fileName);

/** Sets the camera to the settings of a file.
 *
 *  A key that is missing, or whose text is no number, leaves the present value. So a file that does not
 *  exist, or is for another camera type, succeeds and changes nothing, except the display mode: it becomes 0
 *  where its key is missing, and is set only while there is no preview window. The image size is set twice
 *  over, so that settings that limit each other land. Numbers are decimal without a sign where the value has
 *  none; those with bit 31 set are not read back, and an empty text is 0.
 *
 *  \param handle camera
 *  \param fileName name in UTF-16
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; TAVRA_ERROR_FILE_NAME null or empty; the operating
 *      system's code if a file is there and cannot be read; the code of a getter that failed, or of a setter
 *      that refused a value: what was set before stays set
 *  \threads as Tavra_SaveSettingFileW()
 */
TAVRA_API TavraBool Tavra_LoadSettingFileW(TavraHandle handle, const TavraWChar* fileName);

/** Saves the camera's settings; Tavra_SaveSettingFileW() with a name in the system code page.
 *
 *  \param handle camera
 *  \param fileName name in the system code page
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SaveSettingFileW(); TAVRA_ERROR_FILE_NAME the code page lacks a part of the name;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads as Tavra_SaveSettingFileW()
 */
TAVRA_API TavraBool Tavra_SaveSettingFileA(TavraHandle handle, const char* fileName);

/** Sets the camera to the settings of a file; Tavra_LoadSettingFileW() with a name in the system code page.
 *
 *  \param handle camera
 *  \param fileName name in the system code page
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_LoadSettingFileW(); TAVRA_ERROR_FILE_NAME the code page lacks a part of the name;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads as Tavra_SaveSettingFileW()
 */
TAVRA_API TavraBool Tavra_LoadSettingFileA(TavraHandle handle, const char* fileName);

/** Sets the camera to its defaults.
 *
 *  Movie quality 75; the default clock; full frame without skipping and binning; preview window, mask and
 *  destination the whole image; preview format 1 for mono-like cameras, else 4; automatic exposure with all
 *  its values and the control area; the default interpolation; mirror, rotation, magnification, aspect and
 *  display mode 0; colour key 0xFF00FF; sharpness off; gamma off; on colour cameras white balance, hue and
 *  saturation, colour matrix and chroma suppression; camera gamma and V-blank 0; shading correction off with
 *  target 128. The setting file mode leaves the same parts alone as for a file.
 *
 *  \param handle camera
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; the code of a setter that failed: what was set
 *      before stays set
 *  \threads as Tavra_SaveSettingFileW()
 */
TAVRA_API TavraBool Tavra_ResetSetting(TavraHandle handle);

/** Sets which parts saving, loading and reset leave alone.
 *
 *  \param handle camera
 *  \param mode TAVRA_SETTING_FILE_NO_GEOMETRY: image size, preview window, mask and destination,
 *      magnification, aspect and rotation; any other value with bit 16 (TAVRA_SETTING_FILE_NO_ROTATION):
 *      rotation; else nothing
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetSettingFileMode(TavraHandle handle, uint32_t mode);

/** Reads which parts saving, loading and reset leave alone.
 *
 *  \param handle camera
 *  \param[out] mode as set; 0 at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSettingFileMode(TavraHandle handle, uint32_t* mode);

#ifdef __cplusplus
}
#endif
#endif
