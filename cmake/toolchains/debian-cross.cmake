# Cross-building with Debian's cross compilers (g++-<triplet>) against a sysroot unpacked from the
# target's Debian packages (scripts/make-sysroot.sh), tests run with qemu-user. Included by the
# per-target toolchain files, which set SYSCTRL_TRIPLET, SYSCTRL_DEB_ARCH and SYSCTRL_QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${SYSCTRL_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${SYSCTRL_TRIPLET}-g++)
# GCC notes that the ARM calling convention for some arguments changed in GCC 7; everything here
# is built with one newer compiler, so the note says nothing.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
# Debian's multiarch folders: where the sysroot's libraries are and where the packages install.
set(CMAKE_LIBRARY_ARCHITECTURE ${SYSCTRL_TRIPLET})

# The sysroot lives in the build folder unless SYSCTRL_SYSROOT names another place; it is made
# (or brought up to date) on the first configure. try_compile runs see the same value.
if(NOT SYSCTRL_SYSROOT)
    set(SYSCTRL_SYSROOT "${CMAKE_BINARY_DIR}/sysroot" CACHE PATH "Sysroot of the target's Debian packages")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SYSCTRL_SYSROOT)
if(NOT EXISTS "${SYSCTRL_SYSROOT}/.packages")
    execute_process(
        COMMAND ${CMAKE_CURRENT_LIST_DIR}/../../scripts/make-sysroot.sh ${SYSCTRL_DEB_ARCH} ${SYSCTRL_SYSROOT}
        RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "could not prepare the ${SYSCTRL_DEB_ARCH} sysroot in ${SYSCTRL_SYSROOT}")
    endif()
endif()

# The compiler keeps its own C and C++ runtime (/usr/<triplet>); libraries and packages come
# from the sysroot only, programs from the build machine.
set(CMAKE_FIND_ROOT_PATH ${SYSCTRL_SYSROOT} /usr/${SYSCTRL_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Libraries that the sysroot's libraries need (libz for libpng) are found at link time.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT
        "-Wl,-rpath-link,${SYSCTRL_SYSROOT}/lib/${SYSCTRL_TRIPLET}:${SYSCTRL_SYSROOT}/usr/lib/${SYSCTRL_TRIPLET}")
endforeach()

# Test programs run under qemu-user, whose dynamic loader and libraries come from the sysroot.
set(CMAKE_CROSSCOMPILING_EMULATOR ${SYSCTRL_QEMU} -L ${SYSCTRL_SYSROOT})
