// Names of movies that come in the system code page.
#pragma once

#include <cstddef>
#include <string>

#include "platform/text.h"

namespace tavra::api {

// As wide as the buffer that such a name is converted into, less its end. A longer one would be cut to the
// name of another file.
inline constexpr std::size_t kNarrowMovieNameLimit = 259;

// False for no name and for one that is too long.
inline bool wideMovieName(const char* name, std::u16string& wide) {
    if (name == nullptr) return false;
    wide = platform::toWide(name);
    return wide.size() <= kNarrowMovieNameLimit;
}

}  // namespace tavra::api
