#include "media/stills/file_type.h"

#include <algorithm>
#include <initializer_list>

namespace tavra::stills {
namespace {

constexpr char16_t toUpper(char16_t c) {
    return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
}

bool isBeginningOfAny(std::u16string_view extension, std::initializer_list<std::u16string_view> names) {
    return std::any_of(names.begin(), names.end(),
                       [=](std::u16string_view name) { return isBeginningOf(extension, name); });
}

}  // namespace

// By design: only as many characters as the extension has are compared, so ".t" is a TIFF and "." is raw.
bool isBeginningOf(std::u16string_view extension, std::u16string_view name) {
    return extension.size() <= name.size() &&
           std::equal(extension.begin(), extension.end(), name.begin(),
                      [](char16_t given, char16_t wanted) { return toUpper(given) == wanted; });
}

std::optional<std::u16string_view> extensionOf(std::u16string_view fileName) {
    const std::size_t dot = fileName.rfind(u'.');
    if (dot == std::u16string_view::npos) return std::nullopt;
    return fileName.substr(dot + 1);
}

bool isStillExtension(std::u16string_view extension) {
    return isBeginningOfAny(extension, {u"RAW", u"BMP", u"TIF", u"TIFF", u"JPG", u"JPEG", u"PNG"});
}

FileType fileTypeOf(std::u16string_view extension) {
    if (isBeginningOfAny(extension, {u"RAW"})) return FileType::Raw;
    if (isBeginningOfAny(extension, {u"TIF", u"TIFF"})) return FileType::Tiff;
    if (isBeginningOfAny(extension, {u"JPG", u"JPEG"})) return FileType::Jpeg;
    if (isBeginningOfAny(extension, {u"PNG"})) return FileType::Png;
    return FileType::Bmp;
}

}  // namespace tavra::stills
