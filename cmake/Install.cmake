# Installation, in components for the people who use each part:
#   service   the plug-in alone, in the folder the framework loads plug-ins from
#             (SYSCTRL_PLUGIN_DIR)
#   dev       the remote interface's headers, the platform headers they need, the CMake package
#             and the pkg-config file
#   deskhost  the desk-host kit for a PC: the platform runtime, the simulated set, sysctrl-sim
# Binaries are installed stripped; the debug information of each goes to
# <prefix>/lib/debug/.build-id/ (where gdb looks for it), in the component <component>-debug.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(SYSCTRL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/sysctrlservice)

# sysctrl_install_binaries(COMPONENT c DESTINATION dir [EXPORT set] TARGETS target...)
# Installs shared libraries and programs stripped, with their debug information split off.
function(sysctrl_install_binaries)
    cmake_parse_arguments(ARG "" "COMPONENT;DESTINATION;EXPORT" "TARGETS" ${ARGN})
    set(export)
    if(ARG_EXPORT)
        set(export EXPORT ${ARG_EXPORT})
    endif()
    set(destination "\${CMAKE_INSTALL_PREFIX}/${ARG_DESTINATION}")
    if(IS_ABSOLUTE "${ARG_DESTINATION}")
        set(destination "${ARG_DESTINATION}")
    endif()
    foreach(target IN LISTS ARG_TARGETS)
        install(TARGETS ${target} ${export}
            LIBRARY DESTINATION ${ARG_DESTINATION} COMPONENT ${ARG_COMPONENT}
            RUNTIME DESTINATION ${ARG_DESTINATION} COMPONENT ${ARG_COMPONENT})
        install(CODE "execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded
                \"\$ENV{DESTDIR}${destination}/$<TARGET_FILE_NAME:${target}>\"
                COMMAND_ERROR_IS_FATAL ANY)"
            COMPONENT ${ARG_COMPONENT})
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

# The desk-host kit: sysctrlservice::platform (the PC runtime, libzoplatform) and
# sysctrlservice::sim (the simulated set, a static library) and sysctrlservice::recording-client
# (a client that records its callbacks) with their headers, and sysctrl-sim.
sysctrl_install_binaries(COMPONENT deskhost DESTINATION ${CMAKE_INSTALL_LIBDIR}
    EXPORT sysctrlserviceDeskHostTargets TARGETS zoplatform)
sysctrl_install_binaries(COMPONENT deskhost DESTINATION ${CMAKE_INSTALL_BINDIR} TARGETS sysctrl-sim)
install(TARGETS zosim sysctrl-recording-client EXPORT sysctrlserviceDeskHostTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT deskhost)
# A test double's archive: its debug information (most of its size) is not kept.
install(CODE "execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:zosim>\"
        COMMAND_ERROR_IS_FATAL ANY)"
    COMPONENT deskhost)
install(DIRECTORY platform/host/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zoplatform COMPONENT deskhost)
install(DIRECTORY platform/sim/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zosim COMPONENT deskhost)
install(FILES tools/recording-client/RecordingClient.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sysctrl-recording-client COMPONENT deskhost)
install(EXPORT sysctrlserviceDeskHostTargets NAMESPACE sysctrlservice::
    DESTINATION ${SYSCTRL_CMAKE_DIR} COMPONENT deskhost)
sysctrl_install_pkgconfig(sysctrlservice-deskhost deskhost)
