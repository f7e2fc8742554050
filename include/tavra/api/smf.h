/** \file smf.h
 *  SMF movies: recorded mosaics, read back and developed to AVI.
 *
 *  A reader needs no camera. It belongs to one thread at a time and has no last error of its own: a failure
 *  leaves its code as the thread's system error (on Windows: GetLastError()). A file that was cut short opens
 *  as far as whole frames reach.
 */
#ifndef TAVRA_API_SMF_H
#define TAVRA_API_SMF_H

#include "../tavra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Opens an SMF movie for reading.
 *
 *  \param fileName name in UTF-16
 *  \return reader, to be given back with Tavra_SMFCloseFile(); null if the file cannot be opened, or is no
 *      SMF movie
 *  \errors the operating system's code, as the thread's system error; none for a file that is no SMF movie
 *  \threads any
 */
TAVRA_API TavraSmfHandle Tavra_SMFOpenFileW(const TavraWChar* fileName);

/** Opens an SMF movie for reading.
 *
 *  \param fileName name in the system code page, at most 259 characters
 *  \return as Tavra_SMFOpenFileW()
 *  \errors as Tavra_SMFOpenFileW()
 *  \threads any
 */
TAVRA_API TavraSmfHandle Tavra_SMFOpenFileA(const char* fileName);

/** Closes a reader.
 *
 *  \param reader open movie; null is ignored
 *  \errors none of its own
 *  \threads the reader's thread
 */
TAVRA_API void Tavra_SMFCloseFile(TavraSmfHandle reader);

/** Reads the length of a movie.
 *
 *  \param reader open movie
 *  \param[out] frameCount receives the whole frames in the file; may be null
 *  \param[out] lastFrameNumber receives the number of the last frame, counted from 0 with frames that were
 *      lost in between; without meaning where frameCount is 0; may be null
 *  \return 1, or 0
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT reader is null, as the thread's system error
 *  \threads the reader's thread
 */
TAVRA_API TavraBool Tavra_GetSMFFileInfo(TavraSmfHandle reader, uint32_t* frameCount,
                                         uint32_t* lastFrameNumber);

/** Reads how the movie is to be compressed at its conversion.
 *
 *  \param reader open movie
 *  \param[out] compressor TAVRA_AVI_COMPRESSOR_ code or a FOURCC; may be null
 *  \param[out] quality 0 to 100; may be null
 *  \return 1, or 0
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT reader is null, as the thread's system error
 *  \threads the reader's thread
 */
TAVRA_API TavraBool Tavra_GetSMFCompressor(TavraSmfHandle reader, uint32_t* compressor, uint32_t* quality);

/** Sets how the movie is to be compressed at its conversion. The file stays as it is.
 *
 *  \param reader open movie
 *  \param compressor TAVRA_AVI_COMPRESSOR_ code or a FOURCC
 *  \param quality 0 to 100; more counts as 100
 *  \return 1, or 0
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT reader is null, as the thread's system error
 *  \threads the reader's thread
 */
TAVRA_API TavraBool Tavra_SetSMFCompressor(TavraSmfHandle reader, uint32_t compressor, uint32_t quality);

/** Develops a movie to AVI 1.0 with the settings of its recording: interpolation, luminance gamma, sharpness,
 *  colour matrix.
 *
 *  Frames that were lost leave empty ones, by the frames' numbers. The AVI, and with it the conversion, ends
 *  with success at 2 GiB, and ahead of a frame whose number is below that of the first or, counted from it,
 *  above that of the file's last frame; currentFrame tells how far it came.
 *
 *  \param reader open movie
 *  \param fileName name of the AVI file in UTF-16; an existing file is replaced
 *  \param firstFrame frame to begin with, from 0; one beyond the end makes a movie without frames
 *  \param[out] currentFrame receives the index of each frame that is done, from 0; may be null
 *  \param progress called after each frame; may be null. If it stops the conversion, the file holds the
 *      frames done so far
 *  \param context handed to progress as it is; may be null
 *  \return 1, also if it was stopped, or if there was no memory for a frame (then nothing is written); 0 on
 *      failure
 *  \errors TAVRA_ERROR_INVALID_ARGUMENT reader is null, a setting in the file is none, or motion JPEG of a
 *      side above 65535; 13 sizes in the file that no image has, or a frame that is no mosaic; 38 the file
 *      has become shorter; the code of the file or the compressor as for Tavra_SaveAVIW(); 223 a frame, or
 *      the empty ones of a jump, that no 2 GiB hold; 112 and other codes of the operating system for the
 *      movie that is written; all as the thread's system error
 *  \threads the reader's thread; blocks until the file is closed
 */
TAVRA_API TavraBool Tavra_SMF2AVIW(TavraSmfHandle reader, const TavraWChar* fileName, uint32_t firstFrame,
                                   uint32_t* currentFrame, TavraSmfProgressCallback progress, void* context);

/** Develops a movie to AVI 1.0; Tavra_SMF2AVIW() with a name in the system code page of at most 259
 *  characters.
 *
 *  \param reader open movie
 *  \param fileName name of the AVI file in the system code page
 *  \param firstFrame as Tavra_SMF2AVIW()
 *  \param[out] currentFrame as Tavra_SMF2AVIW()
 *  \param progress as Tavra_SMF2AVIW(); may be null
 *  \param context handed to progress as it is; may be null
 *  \return as Tavra_SMF2AVIW()
 *  \errors as Tavra_SMF2AVIW()
 *  \threads as Tavra_SMF2AVIW()
 */
TAVRA_API TavraBool Tavra_SMF2AVIA(TavraSmfHandle reader, const char* fileName, uint32_t firstFrame,
                                   uint32_t* currentFrame, TavraSmfProgressCallback progress, void* context);

#ifdef __cplusplus
}
#endif
#endif
