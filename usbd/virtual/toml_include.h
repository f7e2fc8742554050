// toml++ as this project uses it: no exceptions, parsing only.
#pragma once

#define TOML_EXCEPTIONS 0
#define TOML_ENABLE_FORMATTERS 0
#define TOML_ENABLE_WINDOWS_COMPAT 0

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wundef"
#pragma GCC diagnostic ignored "-Wpedantic"
#endif
#include <toml++/toml.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
