# libpcap, which reads capture files: the target libpcap::libpcap.
# Debian's package has no file for CMake.
find_path(LIBPCAP_INCLUDE_DIR pcap/pcap.h)
find_library(LIBPCAP_LIBRARY pcap)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libpcap DEFAULT_MSG LIBPCAP_LIBRARY LIBPCAP_INCLUDE_DIR)
mark_as_advanced(LIBPCAP_LIBRARY LIBPCAP_INCLUDE_DIR)
if(libpcap_FOUND AND NOT TARGET libpcap::libpcap)
    add_library(libpcap::libpcap UNKNOWN IMPORTED)
    set_target_properties(libpcap::libpcap PROPERTIES
        IMPORTED_LOCATION ${LIBPCAP_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${LIBPCAP_INCLUDE_DIR})
endif()
