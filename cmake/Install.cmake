# Installation, in components for the people who use each part:
#   service       the plug-in alone, in the folder the framework loads plug-ins from
#                 (SYSCTRL_PLUGIN_DIR)
#   dbus          the D-Bus bridge plug-in beside it, the system bus's policy for it and the
#                 interface's description
#   dev           the remote interface's headers, the platform headers they need, the CMake package
#                 and the pkg-config file
#   platform      the platform runtime for a PC, libzoplatform.so.1 (a board's framework brings its
#                 own)
#   deskhost      the desk host sysctrl-sim, which runs the plug-in on the simulated set, with its
#                 manual page
#   deskhost-dev  what a program that runs the simulated set builds with: the runtime's link name,
#                 the simulated set and the recording client (static), their headers, CMake targets
#                 and pkg-config file, and the two example projects of tests/consumer
# Binaries are installed stripped; the debug information of each goes to
# <prefix>/lib/debug/.build-id/ (where gdb looks for it), in the component <component>-debug.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(SYSCTRL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/sysctrlservice)

# sysctrl_strip_installed(COMPONENT c FILE path OPTIONS option...): runs strip with the options
# on an installed file, `path` relative to the prefix (or absolute). .comment and .note say only
# which compiler built it.
function(sysctrl_strip_installed)
    cmake_parse_arguments(ARG "" "COMPONENT;FILE" "OPTIONS" ${ARGN})
    set(file "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ARG_FILE}")
    if(IS_ABSOLUTE "${ARG_FILE}")
        set(file "\$ENV{DESTDIR}${ARG_FILE}")
    endif()
    list(JOIN ARG_OPTIONS " " options)
    install(CODE "execute_process(COMMAND \"${CMAKE_STRIP}\" ${options}
            --remove-section=.comment --remove-section=.note \"${file}\" COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT ${ARG_COMPONENT})
endfunction()

# sysctrl_install_binaries(COMPONENT c DESTINATION dir [EXPORT set] [NAMELINK_COMPONENT c]
#                          TARGETS target...)
# Installs shared libraries and programs stripped, with their debug information split off. A
# versioned library's link name (libNAME.so) goes to NAMELINK_COMPONENT, its files to COMPONENT.
function(sysctrl_install_binaries)
    cmake_parse_arguments(ARG "" "COMPONENT;DESTINATION;EXPORT;NAMELINK_COMPONENT" "TARGETS" ${ARGN})
    set(export)
    if(ARG_EXPORT)
        set(export EXPORT ${ARG_EXPORT})
    endif()
    set(namelink)
    if(ARG_NAMELINK_COMPONENT)
        set(namelink NAMELINK_COMPONENT ${ARG_NAMELINK_COMPONENT})
    endif()
    foreach(target IN LISTS ARG_TARGETS)
        # Shared objects are read, not run: no execute bits, as on the rest of the system.
        install(TARGETS ${target} ${export}
            LIBRARY DESTINATION ${ARG_DESTINATION} COMPONENT ${ARG_COMPONENT} ${namelink}
                PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
            RUNTIME DESTINATION ${ARG_DESTINATION} COMPONENT ${ARG_COMPONENT})
        sysctrl_strip_installed(COMPONENT ${ARG_COMPONENT} OPTIONS --strip-unneeded
            FILE "${ARG_DESTINATION}/$<TARGET_FILE_NAME:${target}>")
        install(CODE "
            execute_process(COMMAND \"${CMAKE_READELF}\" -n \"$<TARGET_FILE:${target}>\"
                OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
            if(NOT notes MATCHES \"Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)\")
                message(FATAL_ERROR \"$<TARGET_FILE:${target}> has no build ID\")
            endif()
            set(debug \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/\${CMAKE_MATCH_1}\")
            file(MAKE_DIRECTORY \"\${debug}\")
            set(debug \"\${debug}/\${CMAKE_MATCH_2}.debug\")
            message(STATUS \"Installing: \${debug}\")
            execute_process(COMMAND \"${CMAKE_OBJCOPY}\" --only-keep-debug --compress-debug-sections
                \"$<TARGET_FILE:${target}>\" \"\${debug}\" COMMAND_ERROR_IS_FATAL ANY)
            file(CHMOD \"\${debug}\" FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)"
            COMPONENT ${ARG_COMPONENT}-debug)
    endforeach()
endfunction()

# sysctrl_gzip_doc(INPUT file OUTPUT file): compresses a manual page or changelog at build time,
# as Debian wants them: best compression, no name or time stamp, so that every build gives the
# same bytes.
add_custom_target(sysctrl-compressed-docs ALL)
function(sysctrl_gzip_doc)
    cmake_parse_arguments(ARG "" "INPUT;OUTPUT" "" ${ARGN})
    add_custom_command(OUTPUT ${ARG_OUTPUT}
        COMMAND sh -c "gzip -9n -c \"$1\" > \"$2\"" gzip ${ARG_INPUT} ${ARG_OUTPUT}
        DEPENDS ${ARG_INPUT} VERBATIM)
    get_filename_component(name ${ARG_OUTPUT} NAME)
    add_custom_target(sysctrl-gzip-${name} DEPENDS ${ARG_OUTPUT})
    add_dependencies(sysctrl-compressed-docs sysctrl-gzip-${name})
endfunction()

# sysctrl_install_pkgconfig(NAME component): configures cmake/NAME.pc.in, relocatable (its prefix
# is found from the file's own folder), into the component.
function(sysctrl_install_pkgconfig name component)
    file(RELATIVE_PATH SYSCTRL_PC_PREFIX
        "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
    string(REGEX REPLACE "/$" "" SYSCTRL_PC_PREFIX "${SYSCTRL_PC_PREFIX}")
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component})
endfunction()

# The plug-in. The platform runtime it links against is already in the process that loads it.
sysctrl_install_binaries(COMPONENT service DESTINATION ${SYSCTRL_PLUGIN_DIR}
    TARGETS app-sysctrlservice-impl)

# The D-Bus bridge: its plug-in beside the service's, the system bus's policy for it and the
# interface's description for tools.
if(SYSCTRL_DBUS)
    sysctrl_install_binaries(COMPONENT dbus DESTINATION ${SYSCTRL_PLUGIN_DIR}
        TARGETS app-sysctrl-dbus)
    install(FILES ${SYSCTRL_DBUS_POLICY}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT dbus)
    install(FILES ${SYSCTRL_DBUS_XML}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces COMPONENT dbus)
endif()

# Development files: sysctrlservice::interface, which also links the platform runtime (on a PC
# from the desk-host kit, on a board the framework's), and sysctrlservice::platform-headers.
install(DIRECTORY system/service/sysctrlservice/interface/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sysctrlservice COMPONENT dev)
install(DIRECTORY platform/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zoplatform COMPONENT dev)
install(TARGETS sysctrlservice-interface zoplatform-headers EXPORT sysctrlserviceTargets)
install(EXPORT sysctrlserviceTargets NAMESPACE sysctrlservice::
    DESTINATION ${SYSCTRL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/sysctrlserviceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/sysctrlserviceConfig.cmake INSTALL_DESTINATION ${SYSCTRL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/sysctrlserviceConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/sysctrlserviceConfig.cmake
    ${PROJECT_BINARY_DIR}/sysctrlserviceConfigVersion.cmake
    DESTINATION ${SYSCTRL_CMAKE_DIR} COMPONENT dev)
sysctrl_install_pkgconfig(sysctrlservice dev)

# The platform runtime for a PC, a shared library of its own so that a program and the plug-ins
# it loads share one registry; its link name goes with the development files.
sysctrl_install_binaries(COMPONENT platform DESTINATION ${CMAKE_INSTALL_LIBDIR}
    NAMELINK_COMPONENT deskhost-dev EXPORT sysctrlserviceDeskHostTargets TARGETS zoplatform)

# The desk host and its manual page.
sysctrl_install_binaries(COMPONENT deskhost DESTINATION ${CMAKE_INSTALL_BINDIR} TARGETS sysctrl-sim)
# The page names the plug-ins' folder as the packages install it, under /usr.
set(SYSCTRL_MAN_PLUGIN_DIR "/usr/${SYSCTRL_PLUGIN_DIR}")
if(IS_ABSOLUTE "${SYSCTRL_PLUGIN_DIR}")
    set(SYSCTRL_MAN_PLUGIN_DIR "${SYSCTRL_PLUGIN_DIR}")
endif()
configure_file(tools/sysctrl-sim/sysctrl-sim.1.in ${PROJECT_BINARY_DIR}/man/sysctrl-sim.1 @ONLY)
sysctrl_gzip_doc(INPUT ${PROJECT_BINARY_DIR}/man/sysctrl-sim.1
    OUTPUT ${PROJECT_BINARY_DIR}/man/sysctrl-sim.1.gz)
install(FILES ${PROJECT_BINARY_DIR}/man/sysctrl-sim.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT deskhost)

# What a program that runs the simulated set builds with: sysctrlservice::platform (the PC
# runtime), sysctrlservice::sim (the simulated set) and sysctrlservice::recording-client (a client
# that records its callbacks), with their headers.
install(TARGETS zosim sysctrl-recording-client EXPORT sysctrlserviceDeskHostTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT deskhost-dev)
# Archives for test programs: their debug information (most of their size) is not kept.
foreach(archive zosim sysctrl-recording-client)
    sysctrl_strip_installed(COMPONENT deskhost-dev
        OPTIONS --strip-debug --enable-deterministic-archives
        FILE "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:${archive}>")
endforeach()
install(DIRECTORY platform/host/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zoplatform COMPONENT deskhost-dev)
install(DIRECTORY platform/sim/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zosim COMPONENT deskhost-dev)
install(FILES tools/recording-client/RecordingClient.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sysctrl-recording-client COMPONENT deskhost-dev)
install(EXPORT sysctrlserviceDeskHostTargets NAMESPACE sysctrlservice::
    DESTINATION ${SYSCTRL_CMAKE_DIR} COMPONENT deskhost-dev)
sysctrl_install_pkgconfig(sysctrlservice-deskhost deskhost-dev)
# The integrators' projects that the tests build, as examples in the development package's
# documentation folder.
install(DIRECTORY tests/consumer/
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/sysctrlservice-dev/examples COMPONENT deskhost-dev)
