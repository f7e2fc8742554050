# tavra_test(<name> [USB_DOUBLE] SOURCES ... [LIBS ...])
#
# One test program for a folder of tests/, linked with all rooms (tavra_core) unless LIBS says otherwise, each of its
# cases a test of its own for ctest. USB_DOUBLE: libtavra talks to the double of tests/support/usb_double.
if(WIN32)
  # There is no package of GoogleTest for mingw, so it is built here from the one with its sources.
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(library gtest gtest_main gmock gmock_main)
    target_compile_options(${library} PRIVATE -w)
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

function(tavra_test name)
  cmake_parse_arguments(TEST "USB_DOUBLE" "" "SOURCES;LIBS" ${ARGN})
  if(NOT TEST_LIBS)
    set(TEST_LIBS tavra_core)
  endif()
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include
                                             ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${TEST_LIBS} GTest::gmock_main)
  if(TEST_USB_DOUBLE)
    target_link_libraries(${name} PRIVATE tavra_usb_double)
    if(WIN32)  # beside the double, which has the name of the real library
      set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/with_usb_double)
    endif()
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
