#include "platform/file.h"

namespace tavra::platform {

OutputFile OutputFile::open(const std::u16string& name, Buffering buffering) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    std::FILE* const stream = _wfopen(reinterpret_cast<const wchar_t*>(name.c_str()), L"wbN");
    if (stream != nullptr && buffering == Buffering::None) std::setvbuf(stream, nullptr, _IONBF, 0);
    return OutputFile(stream);
}

}  // namespace tavra::platform
