# 64-bit ARM boards (Debian arm64).
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(SYSCTRL_TRIPLET aarch64-linux-gnu)
set(SYSCTRL_DEB_ARCH arm64)
set(SYSCTRL_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
