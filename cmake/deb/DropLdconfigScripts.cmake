# Run by cpack once the packages are made (CPACK_POST_BUILD_SCRIPTS). CPack gives a package with a
# shared library in a library folder a postinst and a postrm that only run ldconfig. The package's
# ldconfig trigger does that job (once per dpkg run rather than once per package), so those two
# scripts are taken out of every package that has them, which is then built again.
set(ldconfig_only "^#!/bin/sh\n+set -e\n+if \\[ \"\\$1\" = \"[a-z]+\" \\]; then\n\tldconfig\nfi\n*$")
set(compression gzip)
if(CPACK_DEBIAN_COMPRESSION_TYPE)
    set(compression ${CPACK_DEBIAN_COMPRESSION_TYPE})
endif()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(dropped)
    foreach(script postinst postrm)
        execute_process(COMMAND dpkg-deb --info "${package}" ${script}
            OUTPUT_VARIABLE text RESULT_VARIABLE absent ERROR_QUIET)
        if(absent EQUAL 0 AND text MATCHES "${ldconfig_only}")
            list(APPEND dropped ${script})
        endif()
    endforeach()
    if(NOT dropped)
        continue()
    endif()
    set(unpacked "${package}.unpacked")
    file(REMOVE_RECURSE "${unpacked}")
    execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${unpacked}"
        COMMAND_ERROR_IS_FATAL ANY)
    foreach(script IN LISTS dropped)
        file(REMOVE "${unpacked}/DEBIAN/${script}")
    endforeach()
    execute_process(COMMAND dpkg-deb --root-owner-group -Z${compression} --build "${unpacked}" "${package}"
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${unpacked}")
    get_filename_component(name "${package}" NAME)
    message(STATUS "${name}: without CPack's ldconfig calls (${dropped}); its trigger runs ldconfig")
endforeach()
