/** \file settings_registry.h
 *  Named settings of a camera type in the user's own store.
 *
 *  The store is a tree of keys and values: the registry of the current user on Windows, a database in
 *  `$XDG_CONFIG_HOME/tavra` elsewhere. Each product type has a key,
 *  `SOFTWARE\Halvern\BrinscopePreference\XXXX` with the type in four hexadecimal digits; a named setting is a
 *  key under it, and the type's key itself can hold a setting too (name null).
 *
 *  A setting holds clock mode, scan mode, ALC mode, shutter, gain, target brightness, ALC weights, gain and
 *  shutter ranges, white balance mode, gains and targets, hue and saturation, colour matrix, the mode, value
 *  and table of all gamma curves, sharpness, interpolation, mirror and rotation. It holds neither clock
 *  frequency nor image sizes, nor brightness and contrast of the curves: a load sets those two to 0.
 *
 *  Names of settings have at most 255 characters; capitals and small letters are the same name. Text of the A
 *  forms is in the system code page, names and file names of at most 258 characters. A name of which the code
 *  page lacks a part is refused, and none is cut or altered into another one.
 *
 *  The store is not held while a camera is read or set. The database is shared by all processes of the user,
 *  and a call changes all of what it changes or nothing; the registry takes value after value, so that a
 *  process that ends in the middle of a save leaves new values beside old ones. The database is waited for up
 *  to five seconds in each transaction while another process holds it (then code 170; a call is one
 *  transaction, or two if it has to make the key that it reads); one that is damaged or of another form
 *  (1009), or of a newer version (1306), is refused and never written.
 */
#ifndef TAVRA_API_SETTINGS_REGISTRY_H
#define TAVRA_API_SETTINGS_REGISTRY_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Saves the camera's settings under a name.
 *
 *  A store that cannot be written is no failure: the call succeeds, and the last error has the store's code.
 *  The database then has what it had before; the registry has the values that it took.
 *
 *  \param handle camera
 *  \param name name in UTF-16; may be null: the type's key itself
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; the code of a getter that failed, values written
 *      before stay; with result 1 the store's code
 *  \threads any, not in a callback; the camera's settings must not change meanwhile
 */
TAVRA_API TavraBool Tavra_SaveSettingRegW(TavraHandle handle, const TavraWChar* name);

/** Sets the camera to a named setting.
 *
 *  A key that does not exist is created. A load is defined for a complete setting, as a save writes it; of an
 *  empty one the white balance gains become 128, the targets 100, hue 0 and saturation 100. On a camera that
 *  refuses a colour setting the load ends there.
 *
 *  \param handle camera
 *  \param name name in UTF-16; may be null: the type's key itself
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_TRANSFER_RUNNING the stream runs; the store's code if it cannot be read, nothing is
 *      set then; the code of a setter that refused: what was set before stays set
 *  \threads as Tavra_SaveSettingRegW()
 */
TAVRA_API TavraBool Tavra_LoadSettingRegW(TavraHandle handle, const TavraWChar* name);

/** Deletes a named setting. If it was the default, the mark stays, and reading the default gives an empty
 *  name.
 *
 *  \param handle camera
 *  \param name name in UTF-16
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT name null or empty; the store's code, 2 if there is no such
 *      setting, 5 if there are keys under it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_RemoveSettingRegW(TavraHandle handle, const TavraWChar* name);

/** Marks a setting as the default. Whether it exists is not looked at.
 *
 *  \param handle camera
 *  \param name name in UTF-16; may be null: no default
 *  \return 1, or 0 with the last error set
 *  \errors the store's code if it cannot be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDefaultSettingRegW(TavraHandle handle, const TavraWChar* name);

/** Reads the name of the default setting.
 *
 *  \param handle camera
 *  \param[out] buffer receives the name in UTF-16, zero-terminated; empty if there is no default, it no
 *      longer exists, or it does not fit
 *  \param size bytes at buffer
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT buffer null, or size less than 2; the store's code if it cannot be
 *      read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefaultSettingRegW(TavraHandle handle, TavraWChar* buffer, uint32_t size);

/** Lists the named settings.
 *
 *  \param handle camera
 *  \param[out] buffer receives the names in UTF-16, each followed by a backslash, as far as whole names fit
 *  \param size bytes at buffer
 *  \param[out] count receives the number of all names, also of those that did not fit
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT buffer or count null, or size less than 2; the store's code if it
 *      cannot be read
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSettingListRegW(TavraHandle handle, TavraWChar* buffer, uint32_t size,
                                             uint32_t* count);

/** Writes one setting to a text file in the form of the registry editor, UTF-16. Other settings under it are
 *  not followed.
 *
 *  \param handle camera
 *  \param name name in UTF-16; may be null: the type's key itself
 *  \param fileName name in UTF-16; an existing file is replaced
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_FILE_NAME null or empty; the store's code, 2 if there is no such setting, no file is
 *      made then; the operating system's code if the file cannot be written
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ExportSettingRegW(TavraHandle handle, const TavraWChar* name,
                                            const TavraWChar* fileName);

/** Reads a file that was written by an export. Of its keys the first one under the key of this camera's
 *  product type is taken, with number and byte values; other keys are skipped.
 *
 *  \param handle camera
 *  \param fileName name in UTF-16
 *  \return 1, or 0 if the file cannot be read, is of another form, is for another product type, or holds no
 *      byte value (number values are taken over then)
 *  \errors TAVRA_ERROR_FILE_NAME null or empty; the operating system's code if the file cannot be read; 13
 *      for another form or product type, or no byte value; the store's code if it does not take a value: the
 *      database stays as it was then, the registry has the values ahead of it
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ImportSettingRegW(TavraHandle handle, const TavraWChar* fileName);

/** Saves the camera's settings under a name, as Tavra_SaveSettingRegW().
 *
 *  \param handle camera
 *  \param name name; may be null: the type's key itself
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SaveSettingRegW(); 122 the name is too long; 1113 the code page lacks a part of it;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads as Tavra_SaveSettingRegW()
 */
TAVRA_API TavraBool Tavra_SaveSettingRegA(TavraHandle handle, const char* name);

/** Sets the camera to a named setting, as Tavra_LoadSettingRegW().
 *
 *  \param handle camera
 *  \param name name; may be null: the type's key itself
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_LoadSettingRegW(); 122 the name is too long; 1113 the code page lacks a part of it;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads as Tavra_SaveSettingRegW()
 */
TAVRA_API TavraBool Tavra_LoadSettingRegA(TavraHandle handle, const char* name);

/** Deletes a named setting, as Tavra_RemoveSettingRegW().
 *
 *  \param handle camera
 *  \param name name
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_RemoveSettingRegW(); 122 the name is too long; 1113 the code page lacks a part of it;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_RemoveSettingRegA(TavraHandle handle, const char* name);

/** Marks a setting as the default, as Tavra_SetDefaultSettingRegW().
 *
 *  \param handle camera
 *  \param name name; may be null: no default
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SetDefaultSettingRegW(); 122 the name is too long; 1113 the code page lacks a part of it;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetDefaultSettingRegA(TavraHandle handle, const char* name);

/** Reads the name of the default setting, as Tavra_GetDefaultSettingRegW().
 *
 *  \param handle camera
 *  \param[out] buffer receives the name, zero-terminated; may be empty
 *  \param size bytes at buffer
 *  \return 1, or 0 with the last error set
 *  \errors as the W form; 1113 the code page lacks a part of the name, the buffer is empty then;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetDefaultSettingRegA(TavraHandle handle, char* buffer, uint32_t size);

/** Lists the named settings, as Tavra_GetSettingListRegW().
 *
 *  \param handle camera
 *  \param[out] buffer receives the names, each followed by a backslash, as far as whole names fit; without
 *      those of which the code page lacks a part
 *  \param size bytes at buffer
 *  \param[out] count receives the number of all names, also of those that are left out
 *  \return 1, or 0 with the last error set
 *  \errors as the W form; TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetSettingListRegA(TavraHandle handle, char* buffer, uint32_t size,
                                             uint32_t* count);

/** Writes one setting to a text file, as Tavra_ExportSettingRegW().
 *
 *  \param handle camera
 *  \param name name; may be null: the type's key itself
 *  \param fileName name of the file; an existing file is replaced
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_ExportSettingRegW(); 122 the name, TAVRA_ERROR_FILE_NAME the file's name is too long;
 *      1113 and TAVRA_ERROR_FILE_NAME likewise if the code page lacks a part;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ExportSettingRegA(TavraHandle handle, const char* name, const char* fileName);

/** Reads a file that was written by an export, as Tavra_ImportSettingRegW().
 *
 *  \param handle camera
 *  \param fileName name of the file
 *  \return as Tavra_ImportSettingRegW()
 *  \errors as Tavra_ImportSettingRegW(); TAVRA_ERROR_FILE_NAME the name is too long, or the code page lacks
 *      a part of it; TAVRA_ERROR_OUT_OF_MEMORY no memory
 *  \threads any
 */
TAVRA_API TavraBool Tavra_ImportSettingRegA(TavraHandle handle, const char* fileName);

#ifdef __cplusplus
}
#endif
#endif
