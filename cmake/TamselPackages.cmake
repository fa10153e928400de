# cpack: the zip for Windows; elsewhere Debian packages and a tar archive. The programs are installed
# with their man pages, made from --help, and completion for bash.

set(CPACK_PACKAGE_VENDOR Tamsel)
set(CPACK_PACKAGE_CONTACT "Tamsel maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
if(NOT TAMSEL_INSTALL)
    return()
endif()
if(WIN32)
    include(WindowsZip)
    include(CPack)
    return()
endif()

find_program(HELP2MAN help2man)
if(NOT HELP2MAN)
    message(STATUS "help2man not found: the man pages are left out")
endif()
# program(NAME SUMMARY): what goes with a program, if it is built.
function(program name summary)
    if(NOT TARGET ${name})
        return()
    endif()
    install(TARGETS ${name} COMPONENT tools)
    install(FILES ${PROJECT_SOURCE_DIR}/tools/completion/tamsel.bash RENAME ${name}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    if(HELP2MAN)
        set(page ${CMAKE_CURRENT_BINARY_DIR}/man/${name}.1)
        add_custom_command(OUTPUT ${page}
            COMMAND ${HELP2MAN} --no-info --name=${summary} --output=${page} $<TARGET_FILE:${name}>
            DEPENDS ${name}
            VERBATIM)
        add_custom_target(${name}-man ALL DEPENDS ${page})
        install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    endif()
endfunction()
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/man)
program(tamsel-dump "dump encoded H.323 signalling messages as text")
program(tamsel-capture "find the H.323 messages in captures")

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME tamsel-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(soname_package libtamsel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${soname_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtamsel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${soname_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tamsel-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${PROJECT_DESCRIPTION}: the library.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "${PROJECT_DESCRIPTION}: headers, and the static core that decodes into memory.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "${PROJECT_DESCRIPTION}: programs that dump messages and read captures.")
include(CPack)
