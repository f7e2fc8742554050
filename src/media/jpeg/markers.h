// The markers that the encoder writes (ITU T.81 table B.1).
#pragma once

namespace tavra::jpeg {

inline constexpr unsigned kStartOfBaselineFrame = 0xFFC0;
inline constexpr unsigned kDefineHuffmanTable = 0xFFC4;
inline constexpr unsigned kRestart0 = 0xFFD0;  // up to kRestart0 + 7
inline constexpr unsigned kStartOfImage = 0xFFD8;
inline constexpr unsigned kEndOfImage = 0xFFD9;
inline constexpr unsigned kStartOfScan = 0xFFDA;
inline constexpr unsigned kDefineQuantTable = 0xFFDB;
inline constexpr unsigned kDefineRestartInterval = 0xFFDD;
inline constexpr unsigned kApp0 = 0xFFE0;
inline constexpr unsigned kApp14 = 0xFFEE;

}  // namespace tavra::jpeg
