# SPDX-License-Identifier: MIT
# A forgotten source leaves its class unregistered and a forgotten test never runs, both in silence.

cmake_minimum_required(VERSION 3.25)

set(patterns foundation/*.cpp foundation/include/*.h clss/*.cpp include/*.h tools/*.cpp
  tests/*_test.cpp tests/support/*.cpp)
list(TRANSFORM patterns PREPEND ${SOURCE_DIR}/)

file(STRINGS ${LISTED} listed)
file(GLOB_RECURSE found ${patterns})

# What is not yet under version control may still be growing.
execute_process(COMMAND git -C ${SOURCE_DIR} ls-files
  OUTPUT_VARIABLE tracked ERROR_QUIET RESULT_VARIABLE no_git)
if(NOT no_git)
  string(REPLACE "\n" ";" tracked "${tracked}")
  list(TRANSFORM tracked PREPEND ${SOURCE_DIR}/)
endif()

if(NOT TOOLS)
  list(FILTER found EXCLUDE REGEX "^${SOURCE_DIR}/(tests/)?tools/")
endif()
if(NOT PICTURES)
  list(FILTER found EXCLUDE REGEX "^${SOURCE_DIR}/tests/examples/")
endif()
foreach(file IN LISTS found)
  if(NOT file IN_LIST listed AND (no_git OR file IN_LIST tracked))
    message(SEND_ERROR "${file} is in no CMakeLists.txt")
  endif()
endforeach()
