# SPDX-License-Identifier: MIT
# Installs to one prefix, moves the tree to another, and builds and runs a host there: once through
# find_package, once through pkg-config. The installed command must start where it now stands.

cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE failed)
  if(failed)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR " ${command}\n failed (${failed}):\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_version what)
  string(STRIP "${output}" output)
  if(NOT output STREQUAL VERSION)
    message(FATAL_ERROR "${what} gives version '${output}', not '${VERSION}'")
  endif()
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(host ${SOURCE_DIR}/tests/install)
string(REPLACE "," ";" examples "${EXAMPLES}")
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --config ${CONFIG} --prefix ${WORK_DIR}/staging)
file(RENAME ${WORK_DIR}/staging ${prefix})

run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${host} -B ${WORK_DIR}/build
  -D CMAKE_BUILD_TYPE=Release -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_PREFIX_PATH=${prefix}
  -D VXCLSS_WANTED=${VERSION} -D EXAMPLES=${EXAMPLES})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer)
expect_version("find_package")
foreach(source IN LISTS examples)
  cmake_path(GET source STEM name)
  run(${WORK_DIR}/build/${name})
  set(output_of_${name} "${output}")
endforeach()

execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${host} -B ${WORK_DIR}/refused
  -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_PREFIX_PATH=${prefix} -D VXCLSS_WANTED=99
  -D EXAMPLES=${EXAMPLES} OUTPUT_QUIET ERROR_QUIET RESULT_VARIABLE failed)
if(NOT failed)
  message(FATAL_ERROR "find_package(vxclss 99) was satisfied")
endif()

if(NOT PKG_CONFIG)
  message(FATAL_ERROR "pkg-config not found; install pkgconf")
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --modversion vxclss)
expect_version("pkg-config")
run(${PKG_CONFIG} --cflags --libs vxclss)
separate_arguments(flags UNIX_COMMAND "${output}")
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
foreach(source IN LISTS examples ITEMS ${host}/consumer.cpp)
  cmake_path(GET source STEM name)
  run(${CXX} -std=c++17 ${source} -o ${WORK_DIR}/${name} ${flags})
  run(${WORK_DIR}/${name})
  if(name STREQUAL "consumer")
    expect_version("pkg-config's header")
  elseif(NOT output STREQUAL output_of_${name})
    message(FATAL_ERROR "${name} prints one thing by find_package, another by pkg-config")
  endif()
endforeach()

unset(ENV{LD_LIBRARY_PATH})
if(TOOL)
  run(${prefix}/${BINDIR}/vxclss --version)
  if(NOT output MATCHES "${VERSION}")
    message(FATAL_ERROR "vxclss --version prints '${output}'")
  endif()
endif()
