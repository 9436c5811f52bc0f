# Debian packages (make package, make package-arm), one per install component:
#   sysctrlservice           the plug-in
#   sysctrlservice-dev       the development files
#   sysctrlservice-deskhost  the desk-host kit, for a PC only
#   sysctrlservice-dbus      the D-Bus bridge plug-in with its bus policy
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

# One package per component, and the component's debug information in sysctrlservice-dbg.
# sysctrl_package(COMPONENT c NAME package [DEPENDS component...] [PACKAGE_DEPENDS text]
#                 DESCRIPTION "summary\nlong description")
# A further plug-in joins with its own install component and one call here.
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL)
function(sysctrl_package)
    cmake_parse_arguments(ARG "" "COMPONENT;NAME;PACKAGE_DEPENDS;DESCRIPTION" "DEPENDS" ${ARGN})
    string(TOUPPER ${ARG_COMPONENT} upper)
    set(CPACK_COMPONENT_${upper}_GROUP ${ARG_COMPONENT} PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DEPENDS ${ARG_DEPENDS} PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${ARG_DESCRIPTION}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${ARG_NAME} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${ARG_PACKAGE_DEPENDS}" PARENT_SCOPE)
    # A component without binaries (dev) has an empty debug component, which adds nothing.
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${ARG_COMPONENT} ${ARG_COMPONENT}-debug PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}-DEBUG_GROUP debug PARENT_SCOPE)
endfunction()

sysctrl_package(COMPONENT service NAME sysctrlservice
    DESCRIPTION "System-control service of the television (framework plug-in)
The plug-in libapp-sysctrlservice-impl.so, installed in the framework's plug-in folder. The
framework provides the platform runtime it links against (libzoplatform).")

sysctrl_package(COMPONENT dev NAME sysctrlservice-dev PACKAGE_DEPENDS "libboost-dev (>= 1.74)"
    DESCRIPTION "System-control service: development files
Headers of the remote interface (ServiceInterface, ClientInterface) and of the platform they
use, the CMake package sysctrlservice and the pkg-config file sysctrlservice.pc.")

if(SYSCTRL_DBUS)
    sysctrl_package(COMPONENT dbus NAME sysctrlservice-dbus DEPENDS service PACKAGE_DEPENDS "dbus"
        DESCRIPTION "System-control service: D-Bus bridge (framework plug-in)
The plug-in libapp-sysctrl-dbus.so, loaded beside the service, which serves every operation as
zorbel.lm.sysctrlservice2 on the system bus, with the bus policy that limits the factory and
provisioning operations to root and the sysctrl-factory group.")
endif()

if(NOT CMAKE_CROSSCOMPILING)
    sysctrl_package(COMPONENT deskhost NAME sysctrlservice-deskhost DEPENDS service dev
        PACKAGE_DEPENDS "nlohmann-json3-dev (>= 3)"
        DESCRIPTION "System-control service: desk-host kit for a PC
The platform runtime for a PC (libzoplatform), the simulated television set (libzosim) and a
recording client (libsysctrl-recording-client), with their CMake targets and pkg-config file,
and the desk host sysctrl-sim, which runs the plug-in on the simulated set.")
endif()

set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME sysctrlservice-dbg)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "System-control service: debug information
The debug information of the plug-in and the desk-host kit, by build ID under /usr/lib/debug.")

include(CPack)
