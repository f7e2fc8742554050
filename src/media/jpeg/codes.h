// The numbers of the JPEG encoder's interface: what it is asked for, and how its operations end.
#pragma once

namespace tavra {

// The result of every operation of the encoder and its streams.
enum class [[nodiscard]] JpegError : int{
    None = 0,
    NotImplemented = -1,
    Internal = -2,
    WrongParameters = -3,
    BufferTooSmall = -4,
    FileIo = -5,
    OutOfMemory = -6,
    BadSegment = -7,
    BadFrameSegment = -8,
    BadQuantSegment = -9,
    BadHuffmanSegment = -10,
    BadScanSegment = -11,
    WrongRestartMarker = -12,
};

// What a result means, for a log; "unknown code" for a number that is none of the above. Any thread.
const char* jpegErrorText(int code);
inline const char* jpegErrorText(JpegError error) {
    return jpegErrorText(static_cast<int>(error));
}

// Of these the encoder makes baseline streams.
enum class JpegMode : int { Baseline = 1, Extended = 2, Progressive = 3, Lossless = 4 };

// Colours of the pixels in memory, and of the components in the stream.
enum class JpegColor : int { Unknown = 0, Gray = 1, Rgb = 2, Bgr = 3, YCbCr = 4, Cmyk = 5, Ycck = 6 };

// How many samples of colour there are to those of brightness. Sampling411 is the form with half of the
// columns and half of the rows.
enum class JpegSampling : int { Sampling444 = 0, Sampling422 = 1, Sampling411 = 3, Other = 4 };

}  // namespace tavra

// Leaves the function with the failure of `expression`, if it has one.
#define TAVRA_RETURN_IF_JPEG_ERROR(expression)                      \
    do {                                                            \
        if (const ::tavra::JpegError tavraJpegError = (expression); \
            tavraJpegError != ::tavra::JpegError::None) {           \
            return tavraJpegError;                                  \
        }                                                           \
    } while (false)
