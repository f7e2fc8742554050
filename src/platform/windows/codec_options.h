// What Video for Windows is told of a movie, and what its failures mean here. Pure functions; any thread.
#pragma once

#include <windows.h>
// Behind windows.h:
#include <vfw.h>

#include "base/status.h"
#include "platform/codec_movie.h"

namespace tavra::platform {

inline constexpr DWORD kDeviceIndependentBitmap = mmioFOURCC('D', 'I', 'B', ' ');
inline constexpr DWORD kDefaultQuality = 0xFFFFFFFF;

// The description of the frames, which the framework's calls take without const.
void* mutableHeader(BitmapHeader image);

// Of a file that is opened: the failures that have a code of ours; any other is told as it is. Both set the
// thread's last error, too.
Status codecFileFailure(HRESULT result);
// Of a stream that is to compress.
Status compressorFailure(HRESULT result);

AVISTREAMINFOW streamInfo(const CodecMovieSettings& settings);

// What the compressor is told: of a FOURCC and a quality, or of what the user chose. The choice's blocks stay
// its own.
AVICOMPRESSOPTIONS plainOptions(const CodecMovieSettings& settings);
AVICOMPRESSOPTIONS chosenOptions(const COMPVARS& choice);

}  // namespace tavra::platform
