# Tests for Windows only: names and versions in the files that are shipped, hosts of every kind, the
# console.

set(check_pe ${PROJECT_SOURCE_DIR}/cmake/check_pe.cmake)
add_test(NAME dll.names COMMAND ${CMAKE_COMMAND} -DOBJDUMP=${CMAKE_OBJDUMP}
    -DFILE=$<TARGET_FILE:tamsel_dll> -DVERSION=5.1
    "-DEXPORTS=_H323RASASNDecode@16;_H323UserInfoASNDecode@16;_H323H245ASNDecode@16"
    "-DIMPORTS=KERNEL32.dll;msvcrt.dll" -P ${check_pe})
if(TARGET tamsel-dump)
    add_test(NAME tamsel-dump.version COMMAND ${CMAKE_COMMAND} -DOBJDUMP=${CMAKE_OBJDUMP}
        -DFILE=$<TARGET_FILE:tamsel-dump> -DVERSION=6.0 -P ${check_pe})
endif()
add_test(NAME dll.import-library COMMAND ${CMAKE_COMMAND} -DDLLTOOL=${TAMSEL_DLLTOOL}
    -DDEFINITION=${PROJECT_SOURCE_DIR}/src/Tamsel.def -DLIBRARY=${PROJECT_BINARY_DIR}/libTamsel.a
    -DOUT=${CMAKE_CURRENT_BINARY_DIR}/import_library
    -P ${CMAKE_CURRENT_SOURCE_DIR}/import_library.cmake)

# Hosts in each state of standard output; the second program belongs to the GUI subsystem.
foreach(program tamsel-host-process tamsel-host-process-gui)
    add_executable(${program} host_process.c)
    set_target_properties(${program} PROPERTIES
        C_STANDARD 99 RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
    target_link_libraries(${program} PRIVATE Tamsel::Tamsel tamsel_warnings)
endforeach()
set_target_properties(tamsel-host-process-gui PROPERTIES WIN32_EXECUTABLE ON)
function(add_host_process name)
    add_test(NAME host.${name} COMMAND tamsel-host-process ${ARGN}
        WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
    set_tests_properties(host.${name} PROPERTIES RESOURCE_LOCK host_process.txt)
endfunction()
foreach(kind
        detached closed-stream closed-descriptor binary-files keeps-descriptor keeps-handle)
    add_host_process(${kind} ${kind})
endforeach()
add_host_process(gui detached tamsel-host-process-gui.exe)

if(CMAKE_CROSSCOMPILING_EMULATOR)
    # With a console, which "CON" can be opened on: the host's text reaches it after a call.
    add_test(NAME host.console
        COMMAND ${CMAKE_COMMAND} -DCONSOLE=${CMAKE_CROSSCOMPILING_EMULATOR}-con
            -DHOST=$<TARGET_FILE:tamsel-host-linked> -DDATA=${CMAKE_CURRENT_SOURCE_DIR}/data
            -P ${CMAKE_CURRENT_SOURCE_DIR}/console.cmake
        WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
    set_tests_properties(host.console PROPERTIES RESOURCE_LOCK host_test.txt)
endif()
