// The library's own module, for what is stored in it as a resource.
//
// Windows only. Linux needs no handle: what the library carries with it there is plain data, which the loader
// has already put where the code refers to it.
#pragma once

#if defined(_WIN32)
namespace tavra::platform {

// The library's module handle (an HMODULE); null in a program that has the library's objects linked in. Any
// thread.
//
// By design: the word is one for all processes that have the library loaded, and the first of them fills it.
// The system loads a library at the same address in every process, except where that address is taken.
void* moduleHandle();

}  // namespace tavra::platform
#endif
