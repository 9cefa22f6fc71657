# SPDX-License-Identifier: MIT
# A machine where `long` and pointers have 32 bits. Packages: g++-i686-linux-gnu, qemu-user.
#
# Not g++-multilib, which can't be installed beside the other cross compilers.
set(triplet i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)

# An x86-64 processor runs these programs itself where the kernel lets it.
set(CMAKE_CROSSCOMPILING_EMULATOR
  /usr/${triplet}/lib/ld-linux.so.2 --library-path /usr/${triplet}/lib)
execute_process(COMMAND /usr/${triplet}/lib/ld-linux.so.2 --version
  RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
if(failed)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386 -L /usr/${triplet})
endif()
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
