// The type of a still file, by the text behind the last dot of its name. Pure functions; any thread.
#pragma once

#include <optional>
#include <string_view>

namespace tavra::stills {

enum class FileType { Raw, Bmp, Tiff, Jpeg, Png };

// The text behind the last dot of the whole name, folders included; nothing if there is no dot.
std::optional<std::u16string_view> extensionOf(std::u16string_view fileName);

// Whether the extension is a beginning of the name of a type, which is given in capitals. Without regard to
// case; the empty extension is a beginning of every name.
bool isBeginningOf(std::u16string_view extension, std::u16string_view name);

// Whether the extension stands for any of the types. It is compared over its own length only and without
// regard to case, so that every beginning of RAW, BMP, TIF, TIFF, JPG, JPEG and PNG will do, the empty one
// included.
bool isStillExtension(std::u16string_view extension);

// The type that an extension stands for, by the same comparison; what is none of the others is a bitmap.
FileType fileTypeOf(std::u16string_view extension);

}  // namespace tavra::stills
