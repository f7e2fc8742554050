/** \file tavra_types.h
 *  The types, code tables, callbacks and error codes of the public interface.
 *
 *  Usable from C11 and from C++. Nothing here owns anything; values are plain numbers so that they can be
 *  stored, compared and printed. Included by tavra_api.h, by each header of api/ and by tavra_host.h.
 */
#ifndef TAVRA_TYPES_H
#define TAVRA_TYPES_H

#include <stddef.h>
#include <stdint.h>

/** Marks an exported function. An application that links libtavra statically on Windows defines TAVRA_STATIC.
 */
#if defined(_WIN32)
#if defined(TAVRA_BUILDING)
#define TAVRA_API __declspec(dllexport)
#elif defined(TAVRA_STATIC)
#define TAVRA_API
#else
#define TAVRA_API __declspec(dllimport)
#endif
#else
#define TAVRA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
typedef char16_t TavraWChar; /**< one UTF-16 unit; wide text ends with a zero unit */
#else
typedef uint16_t TavraWChar; /**< one UTF-16 unit; wide text ends with a zero unit */
#endif

typedef int32_t TavraBool;    /**< 0: failure, the reason is Tavra_GetLastError(); otherwise success */
typedef void* TavraHandle;    /**< an open camera; null: none */
typedef void* TavraSmfHandle; /**< an open SMF movie; null: none */
typedef void* TavraWindow;    /**< Windows: HWND. Linux: a receiver of tavra_host.h, or the XID of a window */
typedef void* TavraMenu;      /**< Windows: HMENU. Elsewhere not used */
typedef void* TavraDC;        /**< Windows: HDC. Linux: cairo_t* */

/** \name Error codes
 *  Windows error numbers on every platform, and the library's own from 0xE0000001. A code that is not
 *  listed was taken over from the operating system.
 *  \{
 */
#define TAVRA_ERROR_NONE UINT32_C(0)                      /**< no failure yet */
#define TAVRA_ERROR_DEVICE_GONE UINT32_C(5)               /**< end of the stream: the camera went away */
#define TAVRA_ERROR_OUT_OF_MEMORY UINT32_C(8)             /**< an allocation failed */
#define TAVRA_ERROR_WRITE_FAULT UINT32_C(29)              /**< a file could not be written whole */
#define TAVRA_ERROR_NOT_SUPPORTED UINT32_C(50)            /**< the camera or this library lacks it */
#define TAVRA_ERROR_INVALID_ARGUMENT UINT32_C(87)         /**< argument out of range, or no such setting */
#define TAVRA_ERROR_OPEN_FAILED UINT32_C(110)             /**< a file could not be opened */
#define TAVRA_ERROR_MODULE_NOT_FOUND UINT32_C(126)        /**< USB access library not found */
#define TAVRA_ERROR_OPERATION_NOT_FOUND UINT32_C(127)     /**< USB access library lacks an operation */
#define TAVRA_ERROR_TIMEOUT UINT32_C(258)                 /**< snapshot: time ran out, or the stream ended */
#define TAVRA_ERROR_NO_CAMERA UINT32_C(0xE0000001)        /**< open: no camera found */
#define TAVRA_ERROR_IN_USE UINT32_C(0xE0000002)           /**< open: cameras exist, all are in use */
#define TAVRA_ERROR_INVALID_HANDLE UINT32_C(0xE0000003)   /**< null or closed handle */
#define TAVRA_ERROR_TRANSFER_RUNNING UINT32_C(0xE0000004) /**< refused while the stream runs */
#define TAVRA_ERROR_CONTROL_TRANSFER UINT32_C(0xE0000005) /**< a request failed, or came back short */
#define TAVRA_ERROR_WINDOW_EXISTS UINT32_C(0xE0000006)    /**< display mode: a preview window exists */
#define TAVRA_ERROR_NO_WINDOW UINT32_C(0xE0000007)        /**< there is no preview window */
#define TAVRA_ERROR_RECORDING UINT32_C(0xE0000008)        /**< refused while a recording exists */
#define TAVRA_ERROR_FILE_STREAM UINT32_C(0xE0000009)      /**< movie file or stream failure */
#define TAVRA_ERROR_COMPRESSOR_A UINT32_C(0xE000000A)     /**< codec: none of this kind is installed */
#define TAVRA_ERROR_COMPRESSOR_B UINT32_C(0xE000000B)     /**< codec: refuses the image format */
#define TAVRA_ERROR_COMPRESSOR_C UINT32_C(0xE000000C)     /**< codec: movie file cannot be opened */
#define TAVRA_ERROR_COMPRESSOR_D UINT32_C(0xE000000D)     /**< codec: the choice was cancelled */
#define TAVRA_ERROR_FILE_NAME UINT32_C(0xE000000F)        /**< file name or extension not usable */
#define TAVRA_ERROR_RESERVED_I2C UINT32_C(0xE0000020)     /**< I2C address 0x51 is reserved */
#define TAVRA_ERROR_LEGACY_CAMERA UINT32_C(0xE0000021)    /**< oldest camera types, or plain display mode */
/** \} */

/** Colour array: how a raw frame's samples are laid out. Named by the first two samples of rows 0 and 1.
 *  Mono-like is 1 or 12 to 15; colour is 2 to 5 or 16 to 19. */
enum {
    TAVRA_COLOR_ARRAY_MONO = 1,          /**< one plane */
    TAVRA_COLOR_ARRAY_RGGB = 2,          /**< Bayer, R G / G B */
    TAVRA_COLOR_ARRAY_GRBG = 3,          /**< Bayer, G R / B G */
    TAVRA_COLOR_ARRAY_GBRG = 4,          /**< Bayer, G B / R G */
    TAVRA_COLOR_ARRAY_BGGR = 5,          /**< Bayer, B G / G R */
    TAVRA_COLOR_ARRAY_PATTERN_RGGB = 12, /**< the layout of 2 as a sample pattern only, treated as mono */
    TAVRA_COLOR_ARRAY_PATTERN_GRBG = 13, /**< likewise, of 3 */
    TAVRA_COLOR_ARRAY_PATTERN_GBRG = 14, /**< likewise, of 4 */
    TAVRA_COLOR_ARRAY_PATTERN_BGGR = 15, /**< likewise, of 5 */
    TAVRA_COLOR_ARRAY_QUAD_RGGB = 16,    /**< as 2, but each colour site is a block of 2 x 2 like samples */
    TAVRA_COLOR_ARRAY_QUAD_GRBG = 17,    /**< likewise, of 3 */
    TAVRA_COLOR_ARRAY_QUAD_GBRG = 18,    /**< likewise, of 4 */
    TAVRA_COLOR_ARRAY_QUAD_BGGR = 19     /**< likewise, of 5 */
};

/** Transfer bits per pixel: what the camera sends. One bit each, so that masks can hold them. */
enum {
    TAVRA_TRANSFER_MOSAIC_8 = 0x1,               /**< 8-bit samples of the colour array */
    TAVRA_TRANSFER_MOSAIC_10 = 0x2,              /**< 10 bits, right-aligned in 16-bit words */
    TAVRA_TRANSFER_MOSAIC_12 = 0x4,              /**< 12 bits, likewise */
    TAVRA_TRANSFER_MOSAIC_14 = 0x8,              /**< 14 bits, likewise */
    TAVRA_TRANSFER_MOSAIC_16 = 0x10,             /**< 16 bits */
    TAVRA_TRANSFER_MONO_8 = 0x20,                /**< 8-bit mono */
    TAVRA_TRANSFER_MONO_10 = 0x40,               /**< 10 bits, right-aligned in 16-bit words */
    TAVRA_TRANSFER_MONO_12 = 0x80,               /**< 12 bits, likewise */
    TAVRA_TRANSFER_MONO_14 = 0x100,              /**< 14 bits, likewise */
    TAVRA_TRANSFER_MONO_16 = 0x200,              /**< 16 bits; raw only, there is no preview of it */
    TAVRA_TRANSFER_BGR_8 = 0x400,                /**< 3 bytes a pixel: B, G, R */
    TAVRA_TRANSFER_BGR_10 = 0x800,               /**< a 32-bit word a pixel, 10 bits a channel, B lowest */
    TAVRA_TRANSFER_YCBCR411_FULL = 0x1000,       /**< Y0 Y1 Cb Y2 Y3 Cr for four pixels, full range */
    TAVRA_TRANSFER_YCBCR422_FULL = 0x2000,       /**< Y0 Cb Y1 Cr for two pixels, full range */
    TAVRA_TRANSFER_YCBCR444_FULL = 0x4000,       /**< Y Cb Cr for each pixel, full range */
    TAVRA_TRANSFER_MOSAIC_10_PACKED = 0x10000,   /**< 10 bits, packed; each row starts at a byte */
    TAVRA_TRANSFER_MOSAIC_12_PACKED = 0x20000,   /**< 12 bits, likewise */
    TAVRA_TRANSFER_MONO_10_PACKED = 0x100000,    /**< 10 bits mono, likewise */
    TAVRA_TRANSFER_MONO_12_PACKED = 0x200000,    /**< 12 bits mono, likewise */
    TAVRA_TRANSFER_YCBCR411_LIMITED = 0x1000000, /**< as 0x1000, limited range */
    TAVRA_TRANSFER_YCBCR422_LIMITED = 0x2000000, /**< as 0x2000, limited range */
    TAVRA_TRANSFER_YCBCR444_LIMITED = 0x4000000  /**< as 0x4000, limited range */
};

/** Pixel format of an image in memory. Channels are in the order B, G, R. The preview is 1, 4 or 8. */
enum {
    TAVRA_PIXEL_MONO_8 = 1,   /**< one byte a pixel */
    TAVRA_PIXEL_MONO_16 = 2,  /**< 16-bit words, all bits significant */
    TAVRA_PIXEL_BGR_24 = 4,   /**< three bytes a pixel */
    TAVRA_PIXEL_BGR_32 = 8,   /**< four bytes a pixel; the fourth is not written */
    TAVRA_PIXEL_MONO_10 = 16, /**< 16-bit words, 10 bits right-aligned */
    TAVRA_PIXEL_MONO_12 = 32, /**< 16-bit words, 12 bits right-aligned */
    TAVRA_PIXEL_MONO_14 = 64, /**< 16-bit words, 14 bits right-aligned */
    TAVRA_PIXEL_BGR_48 = 256, /**< three 16-bit words a pixel */
    TAVRA_PIXEL_BGR_64 = 512  /**< four 16-bit words a pixel */
};

/** Colour interpolation methods (api/interpolation.h tells the rule of each). */
enum {
    TAVRA_INTERPOLATION_NONE = 0,          /**< a grey view of the mosaic; the default of a mono camera */
    TAVRA_INTERPOLATION_RAW_COLOR = 1,     /**< each sample in its own channel */
    TAVRA_INTERPOLATION_NEAREST = 2,       /**< one colour for a 2 x 2 cell */
    TAVRA_INTERPOLATION_BILINEAR = 3,      /**< the default of a colour camera */
    TAVRA_INTERPOLATION_FOUR_TAP = 4,      /**< wider taps, sharper */
    TAVRA_INTERPOLATION_CELL_BILINEAR = 5, /**< bilinear at the middle of each cell */
    TAVRA_INTERPOLATION_CELL_NEAREST = 6   /**< accepted by Tavra_ConvertRawToBGR() only */
};

/** Link speed of Tavra_GetUSBSpeed() and Tavra_GetUSBMaxSpeed(). */
enum {
    TAVRA_USB_FULL_SPEED = 0, /**< 12 Mbit/s, or not known */
    TAVRA_USB_HIGH_SPEED = 1, /**< 480 Mbit/s */
    TAVRA_USB_SUPER_SPEED = 2 /**< 5 Gbit/s */
};

/** Function numbers of Tavra_HasFunction() that the library itself goes by. */
enum {
    TAVRA_FUNCTION_SELECTORS_2_AND_3 = 1,   /**< trigger selectors 2 and 3 */
    TAVRA_FUNCTION_REGISTERS = 64,          /**< the camera has registers (Tavra_GetFPGAData2()) */
    TAVRA_FUNCTION_MIRROR_KEEPS_ARRAY = 71, /**< mirroring in the camera does not change the colour array */
    TAVRA_FUNCTION_BINNING_SUM = 131,       /**< binning sum mode */
    TAVRA_FUNCTION_SELECTOR_0 = 256,        /**< trigger selector 0 */
    TAVRA_FUNCTION_DIGITAL_GAIN = 257,      /**< digital gain is in use */
    TAVRA_FUNCTION_ANALOG_BLACK_LEVEL = 0x50006,    /**< analog black level */
    TAVRA_FUNCTION_NO_STORED_GAIN = 0x90004,        /**< setting files leave the analogue gain out */
    TAVRA_FUNCTION_DIGITAL_GAIN_FROM_ONE = 0x90007, /**< digital gain value 0 is a gain of 1 */
    TAVRA_FUNCTION_ADJUSTMENT_MODE = 0x9000A,       /**< adjustment mode */
    TAVRA_FUNCTION_SELECTOR_1 = 0x9000E,            /**< trigger selector 1 */
    TAVRA_FUNCTION_NO_DIGITAL_GAIN = 0xA0008,       /**< digital gain is not in use */
    TAVRA_FUNCTION_PRIORITY_MODE = 0xA001B          /**< priority mode */
};

/** \name Clock modes of Tavra_SetClock()
 *  Other modes are bits of the mask of Tavra_GetEnableClock().
 *  \{
 */
#define TAVRA_CLOCK_MODE_DEFAULT UINT32_C(0)       /**< the camera's own clock */
#define TAVRA_CLOCK_MODE_FREE UINT32_C(0x80000000) /**< any clock between the minimum and the maximum */
/** \} */

/** Trigger selectors: which of the camera's triggers a call is about (Tavra_IsTriggerSelectorSupported()). */
enum {
    TAVRA_TRIGGER_SELECTOR_0 = 0,      /**< main trigger */
    TAVRA_TRIGGER_SELECTOR_1 = 1,      /**< second trigger of register-page cameras */
    TAVRA_TRIGGER_SELECTOR_2 = 2,      /**< main trigger of cameras with function 1 */
    TAVRA_TRIGGER_SELECTOR_SUB = 3,    /**< sub trigger, in force in exposure mode 3 */
    TAVRA_TRIGGER_SELECTOR_READOUT = 4 /**< trigger of the read-out */
};

/** Exposure modes of Tavra_SetExposureMode(). */
enum {
    TAVRA_EXPOSURE_MODE_FREE = 0,          /**< free-running, longest exposure that fits a frame */
    TAVRA_EXPOSURE_MODE_TIMED = 1,         /**< free-running or triggered, with the shutter time set */
    TAVRA_EXPOSURE_MODE_TRIGGER_WIDTH = 2, /**< exposed for as long as the trigger lasts */
    TAVRA_EXPOSURE_MODE_SUB_TRIGGER = 3    /**< under the sub trigger as well; not on every camera */
};

/** Automatic luminance control: who moves shutter and gain (Tavra_SetALCMode()). */
enum {
    TAVRA_ALC_OFF = 0,                       /**< nobody */
    TAVRA_ALC_SHUTTER_AND_GAIN = 1,          /**< the library, both, until changed */
    TAVRA_ALC_SHUTTER = 2,                   /**< the library, the shutter */
    TAVRA_ALC_GAIN = 3,                      /**< the library, the gain */
    TAVRA_ALC_SHUTTER_AND_GAIN_ONCE = 4,     /**< as 1, back to 0 on convergence */
    TAVRA_ALC_SHUTTER_ONCE = 5,              /**< as 2, likewise */
    TAVRA_ALC_GAIN_ONCE = 6,                 /**< as 3, likewise */
    TAVRA_ALC_CAMERA_SHUTTER = 0x10,         /**< the camera itself, its shutter */
    TAVRA_ALC_CAMERA_GAIN = 0x20,            /**< the camera itself, its gain */
    TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN = 0x30 /**< the camera itself, both */
};

/** White balance modes of Tavra_SetWhiteBalanceMode(); bit n of Tavra_GetEnableWhiteBalanceMode() stands
 *  for mode n. */
enum {
    TAVRA_WHITE_BALANCE_OFF = 0,        /**< gains not applied */
    TAVRA_WHITE_BALANCE_MANUAL = 1,     /**< gains applied as set */
    TAVRA_WHITE_BALANCE_CONTINUOUS = 2, /**< gains follow the scene */
    TAVRA_WHITE_BALANCE_ONE_PUSH = 3    /**< gains follow until they rest, then manual */
};

/** Tone curves of Tavra_SetGammaMode(). */
enum {
    TAVRA_GAMMA_INDEX_Y = 0,  /**< luminance of the finished image */
    TAVRA_GAMMA_INDEX_R = 1,  /**< raw R samples */
    TAVRA_GAMMA_INDEX_GR = 2, /**< raw G samples on the rows of R */
    TAVRA_GAMMA_INDEX_GB = 3, /**< raw G samples on the rows of B */
    TAVRA_GAMMA_INDEX_B = 4   /**< raw B samples */
};

/** Form of a tone curve. */
enum {
    TAVRA_GAMMA_OFF = 0,      /**< identity */
    TAVRA_GAMMA_ON = 1,       /**< power curve with brightness and contrast */
    TAVRA_GAMMA_REVERSED = 2, /**< the same, negative */
    TAVRA_GAMMA_TABLE = 255   /**< a table of the application */
};

/** Colour matrix: off, or the application's matrix (Tavra_SetColorMatrix()). */
enum {
    TAVRA_COLOR_MATRIX_OFF = 0,  /**< identity */
    TAVRA_COLOR_MATRIX_ON = 0xFF /**< the application's matrix */
};

/** \name Noise reduction modes of Tavra_SetNoiseReductionMode()
 *  \{
 */
#define TAVRA_NOISE_REDUCTION_OFF UINT32_C(0)                      /**< off */
#define TAVRA_NOISE_REDUCTION_MEDIAN UINT32_C(1)                   /**< median limit */
#define TAVRA_NOISE_REDUCTION_DARK_FRAME UINT32_C(2)               /**< dark frame subtraction */
#define TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME UINT32_C(0x80000000) /**< each frame becomes the dark frame */
/** \} */

/** Shading correction modes of Tavra_SetShadingCorrectionMode(). */
enum {
    TAVRA_SHADING_OFF = 0,              /**< off */
    TAVRA_SHADING_CALIBRATE_GAIN = 1,   /**< average a flat field for mode 2 */
    TAVRA_SHADING_GAIN = 2,             /**< multiply each pixel */
    TAVRA_SHADING_CALIBRATE_OFFSET = 3, /**< average a flat field for mode 4 */
    TAVRA_SHADING_OFFSET = 4,           /**< add to each pixel */
    TAVRA_SHADING_SHOW_MAP = 255        /**< show the map in place of the image */
};

/** Bits of the mirror mode (Tavra_SetMirrorMode()). */
enum {
    TAVRA_MIRROR_HORIZONTAL = 1,         /**< left and right exchanged, by the library */
    TAVRA_MIRROR_VERTICAL = 2,           /**< top and bottom exchanged, by the library */
    TAVRA_MIRROR_CAMERA_HORIZONTAL = 16, /**< left and right exchanged, by the camera */
    TAVRA_MIRROR_CAMERA_VERTICAL = 32    /**< top and bottom exchanged, by the camera */
};

/** Rotation modes of Tavra_SetRotationMode(). */
enum {
    TAVRA_ROTATION_NONE = 0,         /**< as sent */
    TAVRA_ROTATION_CLOCKWISE = 1,    /**< a quarter turn clockwise */
    TAVRA_ROTATION_ANTICLOCKWISE = 2 /**< a quarter turn anticlockwise */
};

/** Aspect modes of Tavra_SetAspectMode(): where the image lands in the preview window's client area. */
enum {
    TAVRA_ASPECT_IMAGE = 0,   /**< image size, centred */
    TAVRA_ASPECT_FIT = 1,     /**< the mask's shape fitted in, centred */
    TAVRA_ASPECT_STRETCH = 2, /**< the whole client area */
    TAVRA_ASPECT_MASK = 3,    /**< mask size, centred */
    TAVRA_ASPECT_FREE = 254,  /**< destination position and size as set */
    TAVRA_ASPECT_SIZE = 255   /**< destination size as set, centred */
};

/** Bits of the information overlay (Tavra_SetDisplayInfoMode()). */
enum {
    TAVRA_DISPLAY_INFO_STATISTICS = 1, /**< statistics as text, top left */
    TAVRA_DISPLAY_INFO_GRID = 2        /**< control grid with its weights */
};

/** \name Compressors of a movie
 *  Any other FOURCC, first character in the low byte, names a codec of the platform: on Windows one that is
 *  installed for Video for Windows, on Linux one that FFmpeg's libraries can encode and file under it in AVI.
 *  \{
 */
#define TAVRA_AVI_COMPRESSOR_NONE UINT32_C(0)            /**< uncompressed */
#define TAVRA_AVI_COMPRESSOR_MJPG UINT32_C(0x47504A4D)   /**< motion-JPEG by the library's own encoder */
#define TAVRA_AVI_COMPRESSOR_CHOOSE UINT32_C(0xFFFFFFFF) /**< the user chooses; Linux: tavra_host.h */
/** \} */

/** State of a recording (Tavra_GetAVIStatus(), Tavra_SetAVIStatus()). */
enum {
    TAVRA_AVI_STATUS_IDLE = 0,      /**< none, or its writer has ended; setting it ends a recording */
    TAVRA_AVI_STATUS_RECORDING = 1, /**< frames are stored */
    TAVRA_AVI_STATUS_PAUSED = 2     /**< frames are counted and not stored */
};

/** Thinning of recorded images (Tavra_SetAVIFrameSize()): width and height divided by 1, 2 or 4. */
enum {
    TAVRA_AVI_FRAME_SIZE_FULL = 0,   /**< all pixels */
    TAVRA_AVI_FRAME_SIZE_HALF = 1,   /**< every second row and column */
    TAVRA_AVI_FRAME_SIZE_QUARTER = 2 /**< every fourth row and column */
};

/** Which AVI layout is preferred (Tavra_SetAVIPriorityFileFormat()). */
enum {
    TAVRA_AVI_FORMAT_1_0 = 0, /**< AVI 1.0, up to 2 GiB a file */
    TAVRA_AVI_FORMAT_2_0 = 1  /**< OpenDML AVI 2.0, uncompressed and motion-JPEG only */
};

/** \name Setting file modes of Tavra_SetSettingFileMode()
 *  \{
 */
#define TAVRA_SETTING_FILE_ALL UINT32_C(0)                  /**< everything */
#define TAVRA_SETTING_FILE_NO_ROTATION UINT32_C(0x10000)    /**< without the rotation mode */
#define TAVRA_SETTING_FILE_NO_GEOMETRY UINT32_C(0xFFFF0000) /**< without sizes and rotation */
/** \} */

/** Messages posted to the receiver (Tavra_SetReceiveMsgWindow()). The first parameter: the camera. */
enum {
    TAVRA_MESSAGE_TRANSFER_STARTED = 45057,    /**< the stream runs; 0 */
    TAVRA_MESSAGE_TRANSFER_ENDED = 45058,      /**< the stream ended; end code, 0 or an error */
    TAVRA_MESSAGE_WINDOW_CREATED = 45059,      /**< preview window created; the window */
    TAVRA_MESSAGE_WINDOW_CLOSED = 45060,       /**< preview window gone or not created; last drawing error */
    TAVRA_MESSAGE_WINDOW_SIZED = 45061,        /**< its client size changed; 0 */
    TAVRA_MESSAGE_MASK_CHANGED = 45062,        /**< preview mask changed; 0 */
    TAVRA_MESSAGE_DESTINATION_CHANGED = 45063, /**< preview destination changed; 0 */
    TAVRA_MESSAGE_RECORDING_PROGRESS = 45064,  /**< the first file of a recording is open; 0 */
    TAVRA_MESSAGE_RECORDING_ENDED = 45065,     /**< the writer of a recording ended; its result */
    TAVRA_MESSAGE_WINDOW_COMMAND = 45066,      /**< menu or control of the preview window; its parameter */
    TAVRA_MESSAGE_FRAME_FINISHED = 45067       /**< a preview image is published; frame number */
};

#ifdef __cplusplus
extern "C" {
#endif

/** Raw frame, before any processing, on the capture thread.
 *
 *  The memory is the read buffer itself. What the callback writes there, later callbacks and the preview
 *  see. It must not call anything that waits for the capture thread (Tavra_StopTransfer(), Tavra_Close(),
 *  ...), and must not remove its own registration.
 *
 *  \param data raw frame, size bytes, rows dense; valid during the call only
 *  \param size bytes
 *  \param width pixels, as sent by the camera
 *  \param height pixels, as sent by the camera
 *  \param frameNumber as the camera counts
 *  \param colorArray TAVRA_COLOR_ARRAY_ code in force, mirroring in the camera included
 *  \param transferBits TAVRA_TRANSFER_ code
 *  \param context as given at registration
 *  \param word address of the registration's own word, 0 at first, free for the callback's use
 */
typedef void (*TavraRawCallback)(void* data, uint32_t size, uint32_t width, uint32_t height,
                                 uint32_t frameNumber, uint16_t colorArray, uint32_t transferBits,
                                 void* context, uint32_t* word);

/** Finished preview image, on the capture thread. Limits as for TavraRawCallback.
 *
 *  \param image size bytes, top row first, each row padded to four bytes; valid during the call only
 *  \param size bytes
 *  \param width pixels, after rotation
 *  \param height pixels, after rotation
 *  \param frameNumber as the camera counts
 *  \param pixelFormat preview pixel format: 1, 4 or 8
 *  \param context as given at registration
 *  \param word address of the registration's own word, 0 at first
 */
typedef void (*TavraPreviewBitmapCallback)(void* image, uint32_t size, uint32_t width, uint32_t height,
                                           uint32_t frameNumber, uint32_t pixelFormat, void* context,
                                           uint32_t* word);

/** Preview image to draw on, on the capture thread. Limits as for TavraRawCallback.
 *
 *  \param dc draws into the image; valid during the call only
 *  \param width pixels, after rotation
 *  \param height pixels, after rotation
 *  \param frameNumber as the camera counts
 *  \param context as given at registration
 *  \param word the registration's own word, by value
 */
typedef void (*TavraPreviewGDICallback)(TavraDC dc, uint32_t width, uint32_t height, uint32_t frameNumber,
                                        void* context, uint32_t word);

/** Progress of a movie conversion, on the thread that converts.
 *
 *  \param currentFrame frame just written, from 0
 *  \param frameCount frames in the movie
 *  \param context as given to the conversion
 *  \return 0 to stop
 */
typedef TavraBool (*TavraSmfProgressCallback)(uint32_t currentFrame, uint32_t frameCount, void* context);

#ifdef __cplusplus
}
#endif
#endif
