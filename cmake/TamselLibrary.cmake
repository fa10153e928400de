# The library as users load it: libTamsel.so or Tamsel.dll, with the three exports and nothing else.

if(WIN32)
    configure_file(${PROJECT_SOURCE_DIR}/src/version.rc.in version.rc @ONLY)
    enable_language(RC)
    add_library(tamsel_dll SHARED $<TARGET_OBJECTS:tamsel_exports>
        ${PROJECT_SOURCE_DIR}/src/dllmain_win32.cpp
        ${PROJECT_SOURCE_DIR}/src/exports.def
        ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
    # ld makes an import library of its own, which cannot be linked: the names in it are decorated
    # twice. So it gets another name, and dlltool makes the one that users link.
    set_target_properties(tamsel_dll PROPERTIES
        LINKER_LANGUAGE CXX PREFIX "" OUTPUT_NAME Tamsel ARCHIVE_OUTPUT_NAME tamsel-by-ld)
    target_link_libraries(tamsel_dll PRIVATE tamsel_core)
    target_link_options(tamsel_dll PRIVATE $<$<CONFIG:Release>:-s> -Wl,--image-base,0x6A500000)
    set(import_library ${CMAKE_CURRENT_BINARY_DIR}/libTamsel.a)
    find_program(TAMSEL_DLLTOOL ${CMAKE_SYSTEM_PROCESSOR}-dlltool i686-w64-mingw32-dlltool REQUIRED)
    add_custom_command(OUTPUT ${import_library}
        COMMAND ${TAMSEL_DLLTOOL} -d ${PROJECT_SOURCE_DIR}/src/import.def -l ${import_library}
        DEPENDS ${PROJECT_SOURCE_DIR}/src/import.def)
    add_custom_target(tamsel_import_library ALL DEPENDS ${import_library})
    add_library(Tamsel INTERFACE)
    target_link_libraries(Tamsel INTERFACE ${import_library})
    add_dependencies(Tamsel tamsel_dll tamsel_import_library)
else()
    add_library(Tamsel SHARED $<TARGET_OBJECTS:tamsel_exports>)
    target_link_libraries(Tamsel PRIVATE $<BUILD_INTERFACE:tamsel_core>)
    set_target_properties(Tamsel PROPERTIES
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    # The sanitizers' own symbols come in with their run-time: hide those as well.
    target_link_options(Tamsel PRIVATE
        -Wl,--gc-sections -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
endif()
add_library(Tamsel::Tamsel ALIAS Tamsel)
target_include_directories(Tamsel INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(CPACK_PACKAGE_VENDOR Tamsel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
if(WIN32)
    # One flat folder, as a host program would be shipped.
    install(TARGETS tamsel_dll RUNTIME DESTINATION . COMPONENT win32)
    install(FILES ${PROJECT_SOURCE_DIR}/src/exports.def RENAME Tamsel.def
        DESTINATION . COMPONENT win32)
    install(FILES ${import_library} ${PROJECT_SOURCE_DIR}/include/Tamsel.h ${PROJECT_SOURCE_DIR}/README.md
        DESTINATION . COMPONENT win32)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/hosts.md ${PROJECT_SOURCE_DIR}/docs/modules.md
        DESTINATION docs COMPONENT win32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME Tamsel-${PROJECT_VERSION}-win32)
    include(CPack)
    return()
endif()

include(CMakePackageConfigHelpers)
install(TARGETS Tamsel EXPORT TamselTargets)
install(FILES ${PROJECT_SOURCE_DIR}/include/Tamsel.h TYPE INCLUDE)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tamsel)
install(EXPORT TamselTargets NAMESPACE Tamsel:: DESTINATION ${package_dir} FILE TamselConfig.cmake)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TamselConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TamselConfigVersion.cmake DESTINATION ${package_dir})
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tamsel.pc.in tamsel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tamsel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
