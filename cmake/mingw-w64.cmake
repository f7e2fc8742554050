# Cross-building for 64-bit Windows with Debian's mingw-w64. Programs run under Wine (scripts/wine-test).
#
# TAVRA_MINGW_SYSROOT is where scripts/build-mingw-libpng leaves what Debian does not package for mingw.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

set(TAVRA_MINGW_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/mingw-sysroot CACHE PATH "Libraries built for mingw")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAVRA_MINGW_SYSROOT)
set(CMAKE_FIND_ROOT_PATH ${TAVRA_MINGW_SYSROOT} /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Libraries that are headers only are the same for every system; the rest of the machine's headers stays out of sight.
foreach(headers toml++)
  if(EXISTS /usr/include/${headers} AND NOT EXISTS ${TAVRA_MINGW_SYSROOT}/include/${headers})
    file(MAKE_DIRECTORY ${TAVRA_MINGW_SYSROOT}/include)
    file(CREATE_LINK /usr/include/${headers} ${TAVRA_MINGW_SYSROOT}/include/${headers} SYMBOLIC)
  endif()
endforeach()

# The compiler's run-time libraries go into each file, so that it runs on a machine without them. -static makes the
# linker look for static archives only, so zlib, which CMake would find as an import library, is named in full.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(ZLIB_LIBRARY /usr/${triplet}/lib/libz.a CACHE FILEPATH "The static zlib")

get_filename_component(wine_run ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run ABSOLUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${wine_run})
