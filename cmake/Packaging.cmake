# Debian packages (make package, make package-arm), from the install components:
#   sysctrlservice           service            the plug-in
#   sysctrlservice-dbus      dbus               the D-Bus bridge plug-in with its bus policy; its
#                                               postinst makes the groups the policy names
#   libzoplatform1           platform           the platform runtime for a PC (PC only)
#   sysctrlservice-deskhost  deskhost           the desk host sysctrl-sim (PC only)
#   sysctrlservice-dev       dev, deskhost-dev  the development files (deskhost-dev on a PC only)
#   sysctrlservice-dbg       <component>-debug  the debug information of the binaries in the others
# Each carries the copyright and the Debian changelog (cmake/deb) in /usr/share/doc/PACKAGE;
# `make package` checks them with lintian (scripts/check-packages.sh).
# Dependencies on shared libraries are computed by dpkg-shlibdeps; for a cross build it reads the
# target's shlibs and symbols files from the sysroot (scripts/make-sysroot.sh).
set(SYSCTRL_DEB_DIR ${PROJECT_SOURCE_DIR}/cmake/deb)

# The Debian revision is the latest changelog entry's; its upstream version must be the project's.
file(STRINGS ${SYSCTRL_DEB_DIR}/changelog latest LIMIT_COUNT 1)
if(NOT latest MATCHES "^sysctrlservice \\(([^-]+)-([^)]+)\\) ")
    message(FATAL_ERROR "cmake/deb/changelog: the first line is not an entry's: ${latest}")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "cmake/deb/changelog: the latest entry is for ${CMAKE_MATCH_1}, the "
        "project is ${PROJECT_VERSION}; add an entry for this version")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sysctrlservice)
set(CPACK_PACKAGE_VENDOR sysctrlservice)
set(CPACK_PACKAGE_CONTACT "sysctrlservice developers <sysctrlservice-devel@lists.sysctrlservice.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_SOURCE sysctrlservice)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# Maintainer scripts executable, the other control files not, whatever the source tree's modes.
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_POST_BUILD_SCRIPTS ${SYSCTRL_DEB_DIR}/DropLdconfigScripts.cmake)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${SYSCTRL_DEB_ARCH})
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${SYSCTRL_SYSROOT}/lib/${SYSCTRL_TRIPLET} ${SYSCTRL_SYSROOT}/usr/lib/${SYSCTRL_TRIPLET})
    # dpkg-shlibdeps reads the target's architecture from the environment cpack runs it in.
    set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackTarget.cmake)
    file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "set(ENV{DEB_HOST_ARCH} ${SYSCTRL_DEB_ARCH})\n")
endif()

# The copyright and the compressed changelog in every package's documentation folder, and its
# lintian overrides (each with its reason) where lintian looks for them.
sysctrl_gzip_doc(INPUT ${SYSCTRL_DEB_DIR}/changelog
    OUTPUT ${PROJECT_BINARY_DIR}/deb/changelog.Debian.gz)
function(sysctrl_package_docs package component)
    install(FILES ${SYSCTRL_DEB_DIR}/copyright ${PROJECT_BINARY_DIR}/deb/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
    configure_file(${SYSCTRL_DEB_DIR}/lintian-overrides.in
        ${PROJECT_BINARY_DIR}/deb/lintian-overrides/${package} @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/deb/lintian-overrides/${package}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component})
endfunction()

# One package per group of components, and the components' debug information in
# sysctrlservice-dbg.
# sysctrl_package(NAME package COMPONENTS component... [DEBUG] [SECTION section]
#                 [DEPENDS component...] [PACKAGE_DEPENDS text] [SUGGESTS text]
#                 [CONTROL file...] DESCRIPTION "summary\nlong description")
# DEBUG: the package has binaries, whose debug information sysctrlservice-dbg carries for exactly
# this version. DEPENDS names the components whose packages this one needs, at the same version.
# A further plug-in joins with its own install component and one call here.
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL)
set(SYSCTRL_DEBUG_DEPENDS)
function(sysctrl_package)
    cmake_parse_arguments(ARG "DEBUG" "NAME;SECTION;PACKAGE_DEPENDS;SUGGESTS;DESCRIPTION"
        "COMPONENTS;DEPENDS;CONTROL" ${ARGN})
    list(GET ARG_COMPONENTS 0 group)
    string(TOUPPER ${group} upper)
    foreach(component IN LISTS ARG_COMPONENTS)
        string(TOUPPER ${component} component_upper)
        set(CPACK_COMPONENT_${component_upper}_GROUP ${group} PARENT_SCOPE)
        set(CPACK_COMPONENT_${component_upper}-DEBUG_GROUP debug PARENT_SCOPE)
        # A component without binaries has an empty debug component, which adds nothing.
        list(APPEND CPACK_COMPONENTS_ALL ${component} ${component}-debug)
    endforeach()
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DEPENDS ${ARG_DEPENDS} PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${ARG_DESCRIPTION}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${ARG_NAME} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${ARG_PACKAGE_DEPENDS}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SUGGESTS "${ARG_SUGGESTS}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${ARG_CONTROL}" PARENT_SCOPE)
    if(ARG_SECTION)
        set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${ARG_SECTION} PARENT_SCOPE)
    endif()
    if(ARG_DEBUG)
        set(SYSCTRL_DEBUG_DEPENDS ${SYSCTRL_DEBUG_DEPENDS} ${group} PARENT_SCOPE)
    endif()
    sysctrl_package_docs(${ARG_NAME} ${group})
endfunction()

sysctrl_package(NAME sysctrlservice COMPONENTS service DEBUG
    DESCRIPTION "system-control service of the television (framework plug-in)
The plug-in libapp-sysctrlservice-impl.so, installed in the framework's
plug-in folder. The framework provides the platform runtime it links
against (libzoplatform.so.1).")

if(SYSCTRL_DBUS)
    sysctrl_package(NAME sysctrlservice-dbus COMPONENTS dbus DEBUG DEPENDS service
        PACKAGE_DEPENDS "adduser, dbus" SUGGESTS "systemd"
        CONTROL ${SYSCTRL_DEB_DIR}/sysctrlservice-dbus/postinst
        DESCRIPTION "system-control service: D-Bus bridge (framework plug-in)
The plug-in libapp-sysctrl-dbus.so, loaded beside the service, which serves
every operation as zorbel.lm.sysctrlservice2 on the system bus, with the
bus policy that limits the factory and provisioning operations to root and
the group sysctrl-factory, and the reading and tuning ones to root and the
groups sysctrl-factory and sysctrl-service. Installing the package creates
both groups.")
endif()

set(dev_components dev)
set(dev_depends)
set(dev_package_depends "libboost-dev (>= 1.74)")
if(NOT CMAKE_CROSSCOMPILING)
    # The runtime's package is named after its SONAME, which the library target sets.
    get_target_property(platform_soversion zoplatform SOVERSION)
    set(SYSCTRL_PLATFORM_PACKAGE libzoplatform${platform_soversion})
    configure_file(${SYSCTRL_DEB_DIR}/libzoplatform/shlibs.in ${PROJECT_BINARY_DIR}/deb/shlibs @ONLY)
    sysctrl_package(NAME ${SYSCTRL_PLATFORM_PACKAGE} COMPONENTS platform DEBUG SECTION libs
        CONTROL ${PROJECT_BINARY_DIR}/deb/shlibs ${SYSCTRL_DEB_DIR}/libzoplatform/triggers
        DESCRIPTION "system-control service: platform runtime for a PC
The platform as the service's plug-in sees it on a television (framework
registry and life cycle, debug channel, configuration, threads, clock,
Base64), implemented for a PC. Programs that run the plug-in on a PC, such
as the desk host sysctrl-sim, link against it.")

    set(deskhost_suggests)
    if(SYSCTRL_DBUS)
        set(deskhost_suggests sysctrlservice-dbus)
    endif()
    sysctrl_package(NAME sysctrlservice-deskhost COMPONENTS deskhost DEBUG
        DEPENDS service platform SUGGESTS "${deskhost_suggests}"
        DESCRIPTION "system-control service: desk host for a PC
The desk host sysctrl-sim, which runs the service's plug-in on a simulated
television set, driven by scripts or typed commands, and can serve it on
D-Bus through the bridge plug-in of sysctrlservice-dbus.")

    list(APPEND dev_components deskhost-dev)
    list(APPEND dev_depends platform)
    string(APPEND dev_package_depends ", nlohmann-json3-dev (>= 3)")
endif()

sysctrl_package(NAME sysctrlservice-dev COMPONENTS ${dev_components} SECTION libdevel
    DEPENDS ${dev_depends} PACKAGE_DEPENDS "${dev_package_depends}"
    DESCRIPTION "system-control service: development files
Headers of the remote interface (ServiceInterface, ClientInterface) and of
the platform they use, the CMake package sysctrlservice and the pkg-config
file sysctrlservice.pc. On a PC also the simulated television set and a
recording client (static libraries), the link name of the platform
runtime, the pkg-config file sysctrlservice-deskhost.pc, and two example
projects that load the plug-in on the simulated set.")

set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME sysctrlservice-dbg)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEBUG_DEPENDS ${SYSCTRL_DEBUG_DEPENDS})
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "system-control service: debug information
The debug information of the binaries of the other packages, by build ID
under /usr/lib/debug, where gdb finds it.")
sysctrl_package_docs(sysctrlservice-dbg service-debug)

include(CPack)
