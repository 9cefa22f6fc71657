# SPDX-License-Identifier: MIT
# What every target of this tree is compiled with. Nothing here reaches a host's own build.

include(CheckCXXSourceCompiles)

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# vxclss_numeric: the same input gives the same bits from every compiler and optimisation level.
#
# A fused multiply-add rounds once where the source rounds twice, and a compiler that knows pow
# turns pow(x, 2.0) into x*x; either changes last bits. The flag for pow stands here and not at the
# files that need it, so that no file, twin or benchmark can forget it.
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}}" MATCHES "-ffast-math|-Ofast|/fp:fast")
  vxclss_refuse("results must not depend on the optimiser; drop -ffast-math, -Ofast or /fp:fast")
endif()
add_library(vxclss_numeric INTERFACE)
if(MSVC)
  target_compile_options(vxclss_numeric INTERFACE /fp:precise)
else()
  target_compile_options(vxclss_numeric INTERFACE -ffp-contract=off -fno-builtin-pow)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    check_cxx_source_compiles("
      #ifndef __i386__
      #error another processor
      #endif
      int main() {}" VXCLSS_IS_X86)
  endif()
  if(VXCLSS_IS_X86)
    # The x87 unit keeps 80 bits in registers and rounds when it spills.
    target_compile_options(vxclss_numeric INTERFACE -msse2 -mfpmath=sse)
  endif()
endif()

# vxclss_build: language level, warnings and instrumentation.
add_library(vxclss_build INTERFACE)
target_link_libraries(vxclss_build INTERFACE vxclss_numeric)
target_compile_features(vxclss_build INTERFACE cxx_std_17)
if(MSVC)
  target_compile_options(vxclss_build INTERFACE /W4 /permissive- $<$<BOOL:${VXCLSS_WERROR}>:/WX>)
else()
  target_compile_options(vxclss_build INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wextra-semi -Wundef
    # clang counts signedness as a conversion, gcc does not.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-sign-conversion>
    $<$<BOOL:${VXCLSS_WERROR}>:-Werror>)
  target_compile_definitions(vxclss_build INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
endif()

if(NOT VXCLSS_SIMD)
  target_compile_definitions(vxclss_build INTERFACE VXCLSS_NO_SIMD)
endif()

if(VXCLSS_SANITIZE)
  list(JOIN VXCLSS_SANITIZE "," vxclss_sanitizers)
  target_compile_options(vxclss_build INTERFACE
    -fsanitize=${vxclss_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # gcc takes its own instrumentation for uses of unset variables, std::regex's among others.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(vxclss_build INTERFACE -fsanitize=${vxclss_sanitizers})
  # Containers are checked where they are used wrongly, before the sanitizer sees the access.
  target_compile_definitions(vxclss_build INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(VXCLSS_COVERAGE)
  target_compile_options(vxclss_build INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(vxclss_build INTERFACE --coverage)
endif()

# vxclss_program(<target>): a program or helper library of this tree.
function(vxclss_program target)
  target_link_libraries(${target} PRIVATE vxclss_build)
  set_target_properties(${target} PROPERTIES CXX_STANDARD 17 CXX_EXTENSIONS OFF)
endfunction()

# vxclss_unity(<target> <number>): so many of its sources are compiled at once. Most of the time that
# a source takes goes to templates which the next one needs too.
function(vxclss_unity target number)
  if(VXCLSS_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${number})
  endif()
endfunction()

# vxclss_library(<name> EXPORT_NAME <name> INCLUDE <dir>... SOURCES <file>... HEADERS <file>...
#                LINK <library>...)
#
# Makes the shared library <name> from the object library <name>_objects. Tests link the objects, so
# that a hidden symbol neither silences a test nor has to be exported for one.
function(vxclss_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT_NAME" "INCLUDE;SOURCES;HEADERS;LINK")
  string(TOUPPER ${name} upper)

  add_library(${name}_objects OBJECT ${arg_SOURCES})
  target_compile_definitions(${name}_objects PRIVATE ${upper}_BUILD)
  target_include_directories(${name}_objects
    PUBLIC ${arg_INCLUDE}
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  set_target_properties(${name}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # A library's own functions are called, not what another library of that name might put before
  # them; gcc inlines within a library only then.
  target_compile_options(${name}_objects PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>
    ${VXCLSS_LIBRARY_OPTIONS})
  vxclss_program(${name}_objects)

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  add_library(vxclss::${arg_EXPORT_NAME} ALIAS ${name})
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${arg_INCLUDE} FILES ${arg_HEADERS})
  set_target_properties(${name} PROPERTIES
    LINKER_LANGUAGE CXX
    EXPORT_NAME ${arg_EXPORT_NAME}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH $<$<NOT:$<PLATFORM_ID:Darwin,Windows>>:$ORIGIN>)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:vxclss_build>)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT VXCLSS_SANITIZE)
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()
  foreach(library IN LISTS arg_LINK)
    target_link_libraries(${name} PUBLIC ${library})
    target_link_libraries(${name}_objects PUBLIC ${library}_objects)
  endforeach()
endfunction()
