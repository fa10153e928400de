# The library as users load it: libTamsel.so or Tamsel.dll, with the three exports and nothing else.

add_library(Tamsel SHARED $<TARGET_OBJECTS:tamsel_core>)
add_library(Tamsel::Tamsel ALIAS Tamsel)
target_include_directories(Tamsel INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(Tamsel PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
if(NOT WIN32)
    # The sanitizers' own symbols come in with their run-time: hide those as well.
    target_link_options(Tamsel PRIVATE
        -Wl,--gc-sections -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
endif()

if(NOT PROJECT_IS_TOP_LEVEL)
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
