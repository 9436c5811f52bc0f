# Debian packages (make package, make package-arm), one per install component:
#   sysctrlservice           the plug-in
#   sysctrlservice-dev       the development files
#   sysctrlservice-deskhost  the desk-host kit, for a PC only
#   sysctrlservice-dbg       the debug information of the binaries in the others
# Dependencies on shared libraries are computed by dpkg-shlibdeps; for a cross build it reads the
# target's shlibs and symbols files from the sysroot (scripts/make-sysroot.sh).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sysctrlservice)
set(CPACK_PACKAGE_VENDOR sysctrlservice)
set(CPACK_PACKAGE_CONTACT "sysctrlservice developers <sysctrlservice@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${SYSCTRL_DEB_ARCH})
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${SYSCTRL_SYSROOT}/lib/${SYSCTRL_TRIPLET} ${SYSCTRL_SYSROOT}/usr/lib/${SYSCTRL_TRIPLET})
    # dpkg-shlibdeps reads the target's architecture from the environment cpack runs it in.
    set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackTarget.cmake)
    file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "set(ENV{DEB_HOST_ARCH} ${SYSCTRL_DEB_ARCH})\n")
endif()

set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL service dev service-debug)
if(NOT CMAKE_CROSSCOMPILING)
    list(APPEND CPACK_COMPONENTS_ALL deskhost deskhost-debug)
endif()

set(CPACK_COMPONENT_SERVICE_GROUP service)
set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME sysctrlservice)
set(CPACK_COMPONENT_SERVICE_DESCRIPTION "System-control service of the television (framework plug-in)
The plug-in libapp-sysctrlservice-impl.so, installed in the framework's plug-in folder. The
framework provides the platform runtime it links against (libzoplatform).")

set(CPACK_COMPONENT_DEV_GROUP dev)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME sysctrlservice-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libboost-dev (>= 1.74)")
set(CPACK_COMPONENT_DEV_DESCRIPTION "System-control service: development files
Headers of the remote interface (ServiceInterface, ClientInterface) and of the platform they
use, the CMake package sysctrlservice and the pkg-config file sysctrlservice.pc.")

set(CPACK_COMPONENT_DESKHOST_GROUP deskhost)
set(CPACK_COMPONENT_DESKHOST_DEPENDS service dev)
set(CPACK_DEBIAN_DESKHOST_PACKAGE_NAME sysctrlservice-deskhost)
set(CPACK_DEBIAN_DESKHOST_PACKAGE_DEPENDS "nlohmann-json3-dev (>= 3)")
set(CPACK_COMPONENT_DESKHOST_DESCRIPTION "System-control service: desk-host kit for a PC
The platform runtime for a PC (libzoplatform), the simulated television set (libzosim, with
its CMake targets and pkg-config file) and the desk host sysctrl-sim, which runs the plug-in on
the simulated set.")

set(CPACK_COMPONENT_SERVICE-DEBUG_GROUP debug)
set(CPACK_COMPONENT_DESKHOST-DEBUG_GROUP debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME sysctrlservice-dbg)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "System-control service: debug information
The debug information of the plug-in and the desk-host kit, by build ID under /usr/lib/debug.")

include(CPack)
