// Any file as .reg text. What is read is written so that it is read alike.
#include <cstdint>
#include <vector>

#include "settings/reg_text.h"

using tavra::parseRegText;
using tavra::platform::TreeValue;

namespace {

constexpr const char16_t* kPrefix = uR"(SOFTWARE\Halvern\BrinscopePreference\0123)";

std::vector<std::uint8_t> wide(const std::u16string& text) {
    std::vector<std::uint8_t> bytes{0xFF, 0xFE};
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tavra::RegText text = parseRegText({data, data + size}, kPrefix);
    if (text.hasKey && (!text.hasForm || text.path.size() < std::u16string_view(kPrefix).size()))
        __builtin_trap();
    for (const TreeValue& value : text.values) {
        if (!text.hasKey || value.name.size() > 256) __builtin_trap();
        // The writer's own oddities: no bytes at all, long values, and names that hold its signs.
        const bool plain = value.name.find_first_of(u"=\u0A00\u0D00\u0D0A\u0A0D") == value.name.npos;
        if (!plain || value.data.empty() || value.data.size() > 4096) continue;
        const tavra::RegText again = parseRegText(wide(tavra::regText(kPrefix, {value})), kPrefix);
        if (again.values.size() != 1 || again.values[0].data != value.data ||
            again.values[0].name != value.name) {
            __builtin_trap();
        }
    }
    return 0;
}
