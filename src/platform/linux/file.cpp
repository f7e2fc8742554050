#include "platform/file.h"

#include "platform/text.h"

namespace tavra::platform {

OutputFile OutputFile::open(const std::u16string& name, Buffering buffering) {
    const std::optional<std::string> narrow = toNarrowExactly(name);
    if (!narrow) return {};
    std::FILE* const stream = std::fopen(narrow->c_str(), "wbe");
    if (stream != nullptr && buffering == Buffering::None) std::setvbuf(stream, nullptr, _IONBF, 0);
    return OutputFile(stream);
}

}  // namespace tavra::platform
