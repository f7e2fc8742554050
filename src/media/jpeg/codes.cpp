#include "media/jpeg/codes.h"

namespace tavra {

const char* jpegErrorText(int code) {
    switch (static_cast<JpegError>(code)) {
        case JpegError::None: return "no error";
        case JpegError::NotImplemented: return "requested feature is not implemented";
        case JpegError::Internal: return "internal error";
        case JpegError::WrongParameters: return "wrong parameters";
        case JpegError::BufferTooSmall: return "buffer too small";
        case JpegError::FileIo: return "file io operation failed";
        case JpegError::OutOfMemory: return "memory allocation failed";
        case JpegError::BadSegment: return "bad segment data";
        case JpegError::BadFrameSegment: return "bad frame segment";
        case JpegError::BadQuantSegment: return "bad quant table segment";
        case JpegError::BadHuffmanSegment: return "bad huffman table segment";
        case JpegError::BadScanSegment: return "bad scan segment";
        case JpegError::WrongRestartMarker: return "wrong restart marker";
    }
    return "unknown code";
}

}  // namespace tavra
