// Any file of sections and keys. Setting a key leaves all other bytes, and the key is found again.
#include <cstdint>
#include <span>
#include <vector>

#include "platform/profile_file.h"

using tavra::platform::ProfileText;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);
    ProfileText text(file);
    const std::vector<std::uint8_t> unchanged = text.bytes();
    const auto first = text.find(u"Clock-0123", u"ClockMode");
    if (text.bytes() != unchanged) __builtin_trap();  // looking changes nothing
    // Half a unit at the end is no text; everything else stays.
    if (unchanged.size() > size || size - unchanged.size() > 1) __builtin_trap();
    for (std::size_t i = 0; i < unchanged.size(); ++i) {
        if (unchanged[i] != data[i]) __builtin_trap();
    }
    text.set(u"Clock-0123", u"ClockMode", u"77");
    text.set(u"Clock-0123", u"New", u"1");
    text.set(u"Other", u"New", u"2");
    ProfileText again(text.bytes());
    if (again.find(u"clock-0123", u"CLOCKMODE") != u"77" || again.find(u"Other", u"New") != u"2")
        __builtin_trap();
    if (first) tavra::platform::profileNumber(*first);
    return 0;
}
