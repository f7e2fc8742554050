# tavra_room(<name> SOURCES ... [LINUX ...] [WINDOWS ...])
#
# One folder of src/: an object library tavra_<name>. The library and the tests are put together from the rooms.
function(tavra_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINUX;WINDOWS" ${ARGN})
  set(sources ${ROOM_SOURCES})
  if(WIN32)
    list(APPEND sources ${ROOM_WINDOWS})
  else()
    list(APPEND sources ${ROOM_LINUX})
  endif()
  add_library(tavra_${name} OBJECT ${sources})
  target_include_directories(tavra_${name} PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(tavra_${name} PRIVATE TAVRA_BUILDING)
  set_property(GLOBAL APPEND PROPERTY TAVRA_ROOMS tavra_${name})
endfunction()

# tavra_vectorise(<target>): for targets with loops over pixels. These are left to the compiler's vectoriser, which -O2
# holds back.
function(tavra_vectorise target)
  if(NOT TAVRA_SANITIZE)
    target_compile_options(${target} PRIVATE -O3)
  endif()
endfunction()

# tavra_version_resource(<target>): the version record of a Windows library, with the project's version.
function(tavra_version_resource target)
  string(REPLACE "." "," TAVRA_VERSION_COMMAS ${PROJECT_VERSION})
  configure_file(${PROJECT_SOURCE_DIR}/src/tavra.rc.in ${PROJECT_BINARY_DIR}/generated/tavra.rc @ONLY)
  enable_language(RC)
  target_sources(${target} PRIVATE ${PROJECT_BINARY_DIR}/generated/tavra.rc)
endfunction()

# tavra_firmware_resource(<target>): the firmware images as resources of a Windows library, under the numbers by which
# src/platform/windows/firmware_image.cpp looks for them.
function(tavra_firmware_resource target)
  set(lines "")
  foreach(entry 773=133 1541=128 1797=131 2053=130)
    string(REPLACE = ";" entry ${entry})
    list(GET entry 0 type)
    list(GET entry 1 number)
    string(APPEND lines "${number} FW_HEX_FILES \"${TAVRA_FIRMWARE_DIR}/${type}.hex\"\n")
  endforeach()
  set(resource ${PROJECT_BINARY_DIR}/generated/firmware.rc)
  file(CONFIGURE OUTPUT ${resource} CONTENT "${lines}" @ONLY)
  enable_language(RC)
  set_source_files_properties(${resource} PROPERTIES OBJECT_DEPENDS "${TAVRA_FIRMWARE_IMAGES}")
  target_sources(${target} PRIVATE ${resource})
  add_dependencies(${target} tavra_firmware_images)
endfunction()
