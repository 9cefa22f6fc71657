# SPDX-License-Identifier: MIT
# How the lists in tests/CMakeLists.txt become test programs, and the tests that need no program.

find_package(GTest QUIET)
if(NOT TARGET GTest::gmock_main)
  vxclss_refuse("GoogleTest not found; install libgtest-dev libgmock-dev or configure with -DBUILD_TESTING=OFF")
endif()
find_package(Threads REQUIRED)
include(GoogleTest)

# vxclss_tests(<name> [UNITY <number>] LINK <library>... SOURCES <file>...)
#
# One test program, each of its cases a CTest test of its own; in sanitizer builds, where a process
# takes long to start, each quarter of them is one. A program that VXCLSS_TESTS leaves out can still
# be built by name. UNITY: how many sources are compiled at once.
function(vxclss_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "UNITY" "LINK;SOURCES")
  add_executable(${name} ${arg_SOURCES})
  vxclss_program(${name})
  target_link_libraries(${name} PRIVATE ${arg_LINK} GTest::gmock_main Threads::Threads)
  # Private headers too, found as the libraries' own sources find them.
  target_include_directories(${name} PRIVATE
    ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/foundation ${PROJECT_SOURCE_DIR}/clss)
  # What is tested keeps its optimisation; the tests themselves take a quarter of the time to compile
  # without.
  if(NOT MSVC)
    target_compile_options(${name} PRIVATE -O0)
  endif()
  # Undefined behaviour is looked for in what is tested; in the tests it would take half as long again.
  # Of these options the last one holds, and those of a linked library come last.
  if(VXCLSS_SANITIZE MATCHES "undefined")
    if(NOT TARGET vxclss_test_build)
      add_library(vxclss_test_build INTERFACE)
      target_compile_options(vxclss_test_build INTERFACE
        -fno-sanitize=undefined,float-cast-overflow)
    endif()
    target_link_libraries(${name} PRIVATE vxclss_test_build)
  endif()
  # Half of a test's compile time is what nearly all of them include.
  target_precompile_headers(${name} PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <functional> <sstream> <string> <vector>)
  if(arg_UNITY)
    vxclss_unity(${name} ${arg_UNITY})
  endif()
  target_compile_definitions(${name} PRIVATE
    VXCLSS_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data"
    VXCLSS_SOURCE_TREE="${PROJECT_SOURCE_DIR}")
  if(VXCLSS_TESTS AND NOT name IN_LIST VXCLSS_TESTS)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  if(NOT VXCLSS_SANITIZE)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600)
    return()
  endif()
  foreach(quarter RANGE 3)
    add_test(NAME ${name}.${quarter} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name}.${quarter} PROPERTIES
      TIMEOUT 1200 ENVIRONMENT "GTEST_TOTAL_SHARDS=4;GTEST_SHARD_INDEX=${quarter}")
  endforeach()
endfunction()

# vxclss_header_checks(<name> <library>)
#
# Compiles every public header of the library alone, twice in a row so that its guard is tried too.
function(vxclss_header_checks name library)
  if(VXCLSS_SANITIZE OR VXCLSS_COVERAGE)
    return()
  endif()
  get_target_property(headers ${library} HEADER_SET)
  get_target_property(roots ${library} HEADER_DIRS)
  foreach(header IN LISTS headers)
    foreach(root IN LISTS roots)
      cmake_path(IS_PREFIX root ${header} inside)
      if(inside)
        file(RELATIVE_PATH HEADER ${root} ${header})
      endif()
    endforeach()
    set(check ${CMAKE_CURRENT_BINARY_DIR}/${name}/${HEADER}.cpp)
    file(CONFIGURE OUTPUT ${check} CONTENT "#include <@HEADER@>\n#include <@HEADER@>\n" @ONLY)
    list(APPEND checks ${check})
  endforeach()
  add_library(${name} OBJECT ${checks})
  vxclss_program(${name})
  target_link_libraries(${name} PRIVATE ${library})
endfunction()

# vxclss_symbol_check(<library>...)
#
# Compares what each library exports with the committed list; the target update_symbols rewrites it.
# Instrumented builds export the instrument's symbols, so only plain ones are compared.
function(vxclss_symbol_check)
  if(VXCLSS_SANITIZE OR VXCLSS_COVERAGE OR NOT CMAKE_NM OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    return()
  endif()
  set(script ${PROJECT_SOURCE_DIR}/cmake/exported_symbols.sh)
  add_custom_target(update_symbols VERBATIM)
  foreach(library IN LISTS ARGN)
    set(list ${CMAKE_CURRENT_SOURCE_DIR}/data/symbols/lib${library}.txt)
    add_test(NAME exported_symbols.${library}
      COMMAND ${script} --check ${CMAKE_NM} $<TARGET_FILE:${library}> ${list} ${PROJECT_BINARY_DIR})
    add_custom_command(TARGET update_symbols POST_BUILD
      COMMAND ${script} --update ${CMAKE_NM} $<TARGET_FILE:${library}> ${list} VERBATIM)
    add_dependencies(update_symbols ${library})
  endforeach()
endfunction()

# vxclss_install_test(): installs, moves the prefix, and builds and runs a host against it.
function(vxclss_install_test)
  if(VXCLSS_SANITIZE OR VXCLSS_COVERAGE)
    return()
  endif()
  find_program(PKG_CONFIG NAMES pkg-config pkgconf)
  get_property(examples GLOBAL PROPERTY VXCLSS_EXAMPLES)
  list(JOIN examples "," examples)
  add_test(NAME install COMMAND ${CMAKE_COMMAND}
    -D BUILD_DIR=${PROJECT_BINARY_DIR}
    -D CONFIG=$<CONFIG>
    -D WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/install
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D VERSION=${PROJECT_VERSION}
    -D LIBDIR=${CMAKE_INSTALL_LIBDIR}
    -D BINDIR=${CMAKE_INSTALL_BINDIR}
    -D TOOL=$<TARGET_NAME_IF_EXISTS:vxclss_tool>
    -D GENERATOR=${CMAKE_GENERATOR}
    -D CXX=${CMAKE_CXX_COMPILER}
    -D PKG_CONFIG=${PKG_CONFIG}
    -D EXAMPLES=${examples}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/install/install_test.cmake)
  set_tests_properties(install PROPERTIES TIMEOUT 600)
endfunction()

# vxclss_list_check(<target>...): every source and header in the tree is in the list that builds it.
function(vxclss_list_check)
  set(listed "")
  foreach(target IN LISTS ARGN)
    if(TARGET ${target})
      get_target_property(dir ${target} SOURCE_DIR)
      foreach(property SOURCES HEADER_SET)
        get_target_property(files ${target} ${property})
        foreach(file IN LISTS files)
          if(file AND NOT file MATCHES "^\\$<")
            cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${dir} NORMALIZE)
            list(APPEND listed ${file})
          endif()
        endforeach()
      endforeach()
    endif()
  endforeach()
  list(JOIN listed "\n" listed)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/listed_files.txt "${listed}\n")
  add_test(NAME file_lists COMMAND ${CMAKE_COMMAND}
    -D SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -D LISTED=${CMAKE_CURRENT_BINARY_DIR}/listed_files.txt
    -D TOOLS=${VXCLSS_BUILD_TOOLS}
    -D PICTURES=$<TARGET_EXISTS:inspect_parts>
    -P ${PROJECT_SOURCE_DIR}/cmake/check_lists.cmake)
endfunction()

# The target coverage prints what the tests that have run since the build have reached.
if(VXCLSS_COVERAGE)
  find_program(GCOVR gcovr)
  if(NOT GCOVR)
    vxclss_refuse("gcovr not found; install gcovr or configure with -DVXCLSS_COVERAGE=OFF")
  endif()
  add_custom_target(coverage
    COMMAND ${PROJECT_SOURCE_DIR}/cmake/coverage.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}
    VERBATIM)
endif()
