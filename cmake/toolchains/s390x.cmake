# SPDX-License-Identifier: MIT
# A big-endian machine. Packages: g++-s390x-linux-gnu, qemu-user.
set(triplet s390x-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x -L /usr/${triplet})
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
