/** \file recording.h
 *  Recording movies: AVI with finished preview images, SMF with raw mosaics.
 *
 *  A recording copies frames into buffers, and a writer thread writes them to the file. No frame is dropped:
 *  when the disk is too slow the capture thread waits for a free buffer, and the camera with it. A frame that
 *  the camera itself lost appears as an empty frame.
 *
 *  The type follows from the text behind the last dot of the file name, compared without case and over its
 *  own length:
 *
 *  - avi without compressor or with TAVRA_AVI_COMPRESSOR_MJPG: AVI 1.0, or OpenDML AVI 2.0 by
 *    Tavra_SetAVIPriorityFileFormat();
 *  - avi with another compressor: AVI 1.0 through the platform's codecs;
 *  - smf: the 8-bit mosaic ahead of interpolation, with the settings to develop it later (smf.h); frames of a
 *    mono, BGR or YCbCr transfer format are not recorded.
 *
 *  TAVRA_MESSAGE_RECORDING_PROGRESS tells that the file is open, TAVRA_MESSAGE_RECORDING_ENDED that the
 *  writer has ended and how. The recording ends by Tavra_SetAVIStatus(), by its number of frames, at the
 *  largest size that layout, file system and free space allow (2 GiB for AVI 1.0), by a write error, or with
 *  the stream; a stream that a snapshot started ends with the snapshot.
 */
#ifndef TAVRA_API_RECORDING_H
#define TAVRA_API_RECORDING_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Starts a recording, and the stream if none runs; a stream that was started so ends with the recording.
 *
 *  Frame size, quality and priority format are those set before. The frame rate in the file is clock / clocks
 *  a frame, as Tavra_GetOutputFPS().
 *
 *  \param handle camera
 *  \param fileName name in UTF-16; an existing file is replaced
 *  \param compressor TAVRA_AVI_COMPRESSOR_ code or a FOURCC; for smf it is stored for the conversion
 *  \param framesPerFile frames after which the recording ends, those that the camera lost included; 0 counts
 *      as 1
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_RECORDING a recording exists already; TAVRA_ERROR_FILE_NAME no name, no dot, or
 *      another type; TAVRA_ERROR_INVALID_ARGUMENT no writer for the compressor, or thinned to nothing;
 *      TAVRA_ERROR_FILE_STREAM the file cannot be opened, or is being recorded or converted elsewhere;
 *      TAVRA_ERROR_OUT_OF_MEMORY no memory for a single frame buffer; for a codec of the platform
 *      TAVRA_ERROR_COMPRESSOR_A there is none, _B it does not take the frames, _C the file cannot be opened,
 *      _D the user chose none, 112 or another code of the operating system the file cannot be written;
 *      TAVRA_ERROR_CONTROL_TRANSFER the frame rate could not be read; the operating system's code if no
 *      stream could be started
 *  \threads any, not in a callback. Starts and ends of recordings of one camera: serialise
 */
TAVRA_API TavraBool Tavra_SaveAVIW(TavraHandle handle, const TavraWChar* fileName, uint32_t compressor,
                                   uint32_t framesPerFile);

/** Starts a recording; Tavra_SaveAVIW() with a name in the system code page of at most 259 characters.
 *
 *  \param handle camera
 *  \param fileName name in the system code page
 *  \param compressor as Tavra_SaveAVIW()
 *  \param framesPerFile as Tavra_SaveAVIW()
 *  \return 1, or 0 with the last error set
 *  \errors as Tavra_SaveAVIW(); TAVRA_ERROR_FILE_NAME also for a longer name
 *  \threads as Tavra_SaveAVIW()
 */
TAVRA_API TavraBool Tavra_SaveAVIA(TavraHandle handle, const char* fileName, uint32_t compressor,
                                   uint32_t framesPerFile);

/** Ends a recording.
 *
 *  \param handle camera
 *  \param status TAVRA_AVI_STATUS_IDLE ends it and waits until the file is closed. TAVRA_AVI_STATUS_RECORDING
 *      and TAVRA_AVI_STATUS_PAUSED succeed without effect on a running recording: it cannot be paused by this
 *      call
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT no recording, or status above 2
 *  \threads any, not in a callback. Starts and ends of recordings of one camera: serialise
 */
TAVRA_API TavraBool Tavra_SetAVIStatus(TavraHandle handle, uint8_t status);

/** Reads how a recording stands. Any of the pointers may be null.
 *
 *  \param handle camera
 *  \param[out] status TAVRA_AVI_STATUS_ code; 0 without a recording
 *  \param[out] framesPerFile frames after which it ends; unchanged without a recording
 *  \param[out] position frames from the first recorded to the last, frames lost by the camera included, less
 *      one; unchanged without a recording
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any; waits while a frame waits for a free buffer
 */
TAVRA_API TavraBool Tavra_GetAVIStatus(TavraHandle handle, uint8_t* status, uint32_t* framesPerFile,
                                       uint32_t* position);

/** Sets how recorded images are thinned, not averaged. Not for smf, whose frames must stay whole to be
 *  developed.
 *
 *  \param handle camera
 *  \param size TAVRA_AVI_FRAME_SIZE_ code; above 2 it is stored as 0. 0 at first
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_RECORDING a recording exists
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAVIFrameSize(TavraHandle handle, uint8_t size);

/** Reads how recorded images are thinned.
 *
 *  \param handle camera
 *  \param[out] size TAVRA_AVI_FRAME_SIZE_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAVIFrameSize(TavraHandle handle, uint8_t* size);

/** Sets the quality of compressed movies, for the next recording.
 *
 *  \param handle camera
 *  \param quality 0 to 100 (finest); above 100 it is stored as 100. 75 at first
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAVIQuality(TavraHandle handle, uint32_t quality);

/** Reads the quality of compressed movies.
 *
 *  \param handle camera
 *  \param[out] quality 0 to 100
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAVIQuality(TavraHandle handle, uint32_t* quality);

/** Sets which AVI layout is preferred, for the next recording.
 *
 *  \param handle camera
 *  \param format TAVRA_AVI_FORMAT_1_0, as at first, or TAVRA_AVI_FORMAT_2_0
 *  \return 1, or 0 with the last error set
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT format above 1
 *  \threads any
 */
TAVRA_API TavraBool Tavra_SetAVIPriorityFileFormat(TavraHandle handle, uint32_t format);

/** Reads which AVI layout is preferred.
 *
 *  \param handle camera
 *  \param[out] format TAVRA_AVI_FORMAT_ code
 *  \return 1, or 0 with the last error set
 *  \errors none of its own
 *  \threads any
 */
TAVRA_API TavraBool Tavra_GetAVIPriorityFileFormat(TavraHandle handle, uint32_t* format);

#ifdef __cplusplus
}
#endif
#endif
