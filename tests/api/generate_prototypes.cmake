# cmake -DTABLE=exports.tsv -DDIRECTORY=dir -P generate_prototypes.cmake
#
# Writes prototypes.c and prototypes.cpp from the table of exports. Compiling them is the test: in C each row declares
# its function again, so that another result or argument type is a conflict; in C++ each row compares the types.
file(STRINGS "${TABLE}" rows)
list(POP_FRONT rows)

set(c "#include <tavra/tavra_api.h>\n\n")
set(cpp "#include <tavra/tavra_api.h>\n\n#include <type_traits>\n\n")
set(count 0)
foreach(row IN LISTS rows)
  if(NOT row MATCHES "^([A-Za-z0-9_]+)\t([^\t]+)\t([^\t]+)$")
    message(FATAL_ERROR "${TABLE}: not a row of three columns: ${row}")
  endif()
  set(name ${CMAKE_MATCH_1})
  set(result ${CMAKE_MATCH_2})
  set(arguments ${CMAKE_MATCH_3})
  string(APPEND c "TAVRA_API ${result} ${name}(${arguments});\n")
  string(APPEND cpp "static_assert(std::is_same_v<decltype(&${name}), ${result} (*)(${arguments})>);\n")
  math(EXPR count "${count} + 1")
endforeach()
if(count EQUAL 0)
  message(FATAL_ERROR "${TABLE}: no rows")
endif()

file(CONFIGURE OUTPUT "${DIRECTORY}/prototypes.c" CONTENT "${c}" @ONLY)
file(CONFIGURE OUTPUT "${DIRECTORY}/prototypes.cpp" CONTENT "${cpp}" @ONLY)
