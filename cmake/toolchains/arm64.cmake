# SPDX-License-Identifier: MIT
# Packages: g++-aarch64-linux-gnu, qemu-user.
set(triplet aarch64-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/${triplet})
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
