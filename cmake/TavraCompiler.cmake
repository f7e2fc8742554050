# How every target of the project is compiled.
#
# Pixels are exact to the bit: floating point is evaluated as written (no contraction, no fast-math), on every
# instruction set, so that the baseline and the wider builds give the same bytes.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()
if(TAVRA_SANITIZE)
  # Sanitized code takes three times as long to compile at -O2; line numbers are what its reports need.
  set(flags "-O1 -g1 -DNDEBUG")
else()
  set(flags "-O2 -g -DNDEBUG")
endif()
set(CMAKE_C_FLAGS_RELWITHDEBINFO ${flags})
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO ${flags})

find_program(CCACHE ccache)
if(CCACHE)
  # Paths relative to the checkout, so that the cache serves every checkout of the machine.
  set(cached ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${cached})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${cached})
endif()

add_compile_options(-march=${TAVRA_ARCH} -ffp-contract=off -fno-math-errno -fno-trapping-math
                    -Wall -Wextra -Wpedantic -Wshadow -Wundef -Wcast-align -Wformat=2 -Werror)
if(WIN32)
  # Programs find the libraries that stand beside them.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  # Windows 7 and later; what is newer is looked up at run time.
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
endif()
if(TAVRA_ARCH STREQUAL "x86-64")
  add_compile_options(-mtune=generic)
endif()
if(TAVRA_SANITIZE)
  add_compile_options(-fsanitize=${TAVRA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVRA_SANITIZE})
endif()

# Paths of the building machine stay out of what is shipped. Elsewhere they would keep the compiler's cache from serving
# another checkout.
option(TAVRA_HIDE_PATHS "Leave the paths of the building machine out of debug information and messages" OFF)
if(TAVRA_HIDE_PATHS)
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
endif()
