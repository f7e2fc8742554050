// The table of all keys of a setting file, as docs/settings.md holds it.
#pragma once

#include <string>

namespace tavra {

// Markdown, with a line end behind the last row. From the table by which files are written and read.
std::string settingKeysTable();

// The lines between which it stands in the page.
inline constexpr const char* kTableBegin = "<!-- keys: scripts/setting-keys writes what follows -->\n";
inline constexpr const char* kTableEnd = "<!-- keys: end -->\n";

}  // namespace tavra
