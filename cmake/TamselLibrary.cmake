# The library as users load it: libTamsel.so or Tamsel.dll, with the three exports and nothing else.

if(WIN32)
    configure_file(${PROJECT_SOURCE_DIR}/src/version.rc.in version.rc @ONLY)
    enable_language(RC)
    add_library(tamsel_dll SHARED $<TARGET_OBJECTS:tamsel_exports>
        ${PROJECT_SOURCE_DIR}/src/dllmain_win32.cpp
        ${PROJECT_SOURCE_DIR}/src/dll.def
        ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
    # The import library that ld makes cannot be linked, because the names in it are decorated twice.
    # It gets another name, and dlltool makes the one that users link.
    set_target_properties(tamsel_dll PROPERTIES
        LINKER_LANGUAGE CXX PREFIX "" OUTPUT_NAME Tamsel ARCHIVE_OUTPUT_NAME tamsel-by-ld)
    target_link_libraries(tamsel_dll PRIVATE tamsel_core)
    target_link_options(tamsel_dll PRIVATE $<$<CONFIG:Release>:-s> -Wl,--image-base,0x6A500000)
    set(import_library ${CMAKE_CURRENT_BINARY_DIR}/libTamsel.a)
    find_program(TAMSEL_DLLTOOL ${CMAKE_SYSTEM_PROCESSOR}-dlltool i686-w64-mingw32-dlltool REQUIRED)
    # dlltool writes the name of the library and its temporary prefix into it. Neither may depend on the
    # folder or the process.
    add_custom_command(OUTPUT ${import_library}
        COMMAND ${TAMSEL_DLLTOOL} -d ${PROJECT_SOURCE_DIR}/src/Tamsel.def -t tamsel -l libTamsel.a
        WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
        DEPENDS ${PROJECT_SOURCE_DIR}/src/Tamsel.def
        VERBATIM)
    add_custom_target(tamsel_import_library ALL DEPENDS ${import_library})
    add_library(Tamsel INTERFACE)
    target_link_libraries(Tamsel INTERFACE ${import_library})
    add_dependencies(Tamsel tamsel_dll tamsel_import_library)
else()
    add_library(Tamsel $<TARGET_OBJECTS:tamsel_exports>)
    set_target_properties(Tamsel PROPERTIES
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    if(BUILD_SHARED_LIBS)
        set(exports_map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
        set_target_properties(Tamsel PROPERTIES LINK_DEPENDS ${exports_map})
        target_link_libraries(Tamsel PRIVATE $<BUILD_INTERFACE:tamsel_core>)
        # The sanitizers' run-time adds symbols of its own: they are hidden as well.
        target_link_options(Tamsel PRIVATE
            LINKER:--gc-sections,--version-script=${exports_map})
    else()
        target_link_libraries(Tamsel PRIVATE tamsel_core)
    endif()
endif()
add_library(Tamsel::Tamsel ALIAS Tamsel)
target_include_directories(Tamsel INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
