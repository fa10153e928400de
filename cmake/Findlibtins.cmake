# libtins, which reads packets: the target libtins::libtins.
# Debian's package has no file for CMake.
find_path(LIBTINS_INCLUDE_DIR tins/tins.h)
find_library(LIBTINS_LIBRARY tins)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libtins DEFAULT_MSG LIBTINS_LIBRARY LIBTINS_INCLUDE_DIR)
mark_as_advanced(LIBTINS_LIBRARY LIBTINS_INCLUDE_DIR)
if(libtins_FOUND AND NOT TARGET libtins::libtins)
    add_library(libtins::libtins UNKNOWN IMPORTED)
    set_target_properties(libtins::libtins PROPERTIES
        IMPORTED_LOCATION ${LIBTINS_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${LIBTINS_INCLUDE_DIR})
endif()
