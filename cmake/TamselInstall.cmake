# What is installed, where, and in which package: libraries, headers, and the files by which CMake and
# pkg-config find them. Components are the Debian packages.

include(CMakePackageConfigHelpers)

# The core has a folder of headers of its own: the names of generated headers are short.
set(core_headers ${CMAKE_INSTALL_INCLUDEDIR}/tamsel)
install(TARGETS Tamsel EXPORT TamselTargets
    LIBRARY COMPONENT library NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development)
install(TARGETS tamsel_core EXPORT TamselTargets ARCHIVE COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/include/Tamsel.h TYPE INCLUDE COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/src/TamselCore.h
    DESTINATION ${core_headers} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/rtsrc/asn1per
    ${TAMSEL_MODULE_DIR}/1998/ ${TAMSEL_MODULE_DIR}/2009
    DESTINATION ${core_headers} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN "*Decode.h" EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tamsel)
install(EXPORT TamselTargets NAMESPACE Tamsel:: DESTINATION ${package_dir} FILE TamselConfig.cmake
    COMPONENT development)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TamselConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TamselConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
if(BUILD_SHARED_LIBS)
    set(requires_core "")
else()
    set(requires_core "Requires: tamsel-core\n")
endif()
foreach(pc tamsel tamsel-core)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in ${pc}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    ${PROJECT_SOURCE_DIR}/SECURITY.md
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/tamsel COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs  # where the links of README.md lead
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/tamsel COMPONENT development)
