# SPDX-License-Identifier: MIT
# Whether programs that were built against the last version go on running, and how much the
# libraries weigh.

# vxclss_abi_check(<library>...)
#
# Compares each library with the description of the last version; the target update_abi renews the
# descriptions. They are of x86-64, and need debug information.
function(vxclss_abi_check)
  if(VXCLSS_SANITIZE OR VXCLSS_COVERAGE OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU"
      OR NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" OR CMAKE_CROSSCOMPILING
      OR NOT CMAKE_BUILD_TYPE MATCHES "^(Debug|RelWithDebInfo)$")
    return()
  endif()
  find_program(VXCLSS_ABIDIFF abidiff)
  find_program(VXCLSS_ABIDW abidw)
  mark_as_advanced(VXCLSS_ABIDIFF VXCLSS_ABIDW)
  if(NOT VXCLSS_ABIDIFF OR NOT VXCLSS_ABIDW)
    message(STATUS "abi: not checked; install abigail-tools")
    return()
  endif()

  set(script ${PROJECT_SOURCE_DIR}/packaging/abi.sh)
  add_custom_target(update_abi VERBATIM)
  foreach(library IN LISTS ARGN)
    get_target_property(headers ${library} HEADER_DIRS)
    set(arguments $<TARGET_FILE:${library}> ${PROJECT_SOURCE_DIR}/packaging/abi/lib${library}.abi.gz
      ${headers})
    add_test(NAME abi.${library} COMMAND ${script} --check ${arguments})
    add_custom_command(TARGET update_abi POST_BUILD COMMAND ${script} --update ${arguments} VERBATIM)
    add_dependencies(update_abi ${library})
  endforeach()
  add_test(NAME abi_check COMMAND ${PROJECT_SOURCE_DIR}/tests/packaging/abi_test.sh
    ${script} ${CMAKE_CXX_COMPILER} ${CMAKE_CURRENT_BINARY_DIR}/abi_test)
endfunction()

# vxclss_library_check(<library>...): size and dependencies of what is shipped.
function(vxclss_library_check)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Release" OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux"
      OR VXCLSS_SANITIZE OR VXCLSS_COVERAGE OR NOT CMAKE_STRIP OR NOT CMAKE_READELF)
    return()
  endif()
  list(TRANSFORM ARGN REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE files)
  add_test(NAME libraries COMMAND ${PROJECT_SOURCE_DIR}/tests/packaging/libraries_test.sh
    ${CMAKE_STRIP} ${CMAKE_READELF} ${files})
endfunction()
