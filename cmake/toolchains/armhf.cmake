# 32-bit ARM boards (Debian armhf).
set(CMAKE_SYSTEM_PROCESSOR arm)
set(SYSCTRL_TRIPLET arm-linux-gnueabihf)
set(SYSCTRL_DEB_ARCH armhf)
set(SYSCTRL_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
