# Runs the generator over the sets of modules. A set is a folder of asn1/ and one line at the end of
# this file; each file of the folder is a module. What this file defines:
#   TAMSEL_MODULE_DIR       holds a folder of headers and sources for each set
#   TAMSEL_MODULE_INCLUDES  where headers are found: those of 1998 as "H245.h", of all sets by the
#                           name of the set as "2009/H245.h"
#   TAMSEL_MODULE_SOURCES   decoders and printers of all sets
#   TAMSEL_TYPE_TABLES      tables of all types of all sets, for tests and fuzzers

set(TAMSEL_MODULE_DIR ${CMAKE_CURRENT_BINARY_DIR}/modules)

if(CMAKE_CROSSCOMPILING)
    include(ExternalProject)
    ExternalProject_Add(tamsel_gen_native
        SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}/gen
        BINARY_DIR ${CMAKE_CURRENT_BINARY_DIR}/gen-native
        CMAKE_ARGS -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=${CMAKE_UNITY_BUILD}
        INSTALL_COMMAND ""
        BUILD_ALWAYS ON
        BUILD_BYPRODUCTS ${CMAKE_CURRENT_BINARY_DIR}/gen-native/tamsel-gen)
    set(TAMSEL_GEN ${CMAKE_CURRENT_BINARY_DIR}/gen-native/tamsel-gen)
    set(gen_depends tamsel_gen_native ${TAMSEL_GEN})
else()
    add_subdirectory(gen)
    set(TAMSEL_GEN $<TARGET_FILE:tamsel-gen>)
    set(gen_depends tamsel-gen)
endif()

# Adds the command that writes the modules of `files` into `directory`; options of the generator may
# follow. What it writes is listed in `prefix`_SOURCES and `prefix`_TABLES. The generator does not touch
# a file that would not change, so that nothing made from it is built again; the stamp, which is among
# the sources, records that it ran.
function(tamsel_generate prefix directory files)
    set(headers)
    set(sources)
    set(tables)
    foreach(file IN LISTS files)
        get_filename_component(stem ${file} NAME_WE)
        list(APPEND headers ${directory}/${stem}.h ${directory}/${stem}Names.h
            ${directory}/${stem}Decode.h)
        list(APPEND sources ${directory}/${stem}Decode.cpp ${directory}/${stem}Trace.cpp
            ${directory}/${stem}Print.cpp)
        list(APPEND tables ${directory}/${stem}Types.cpp)
    endforeach()
    set(written ${headers} ${sources} ${tables})
    file(MAKE_DIRECTORY ${directory})
    set_source_files_properties(${written} PROPERTIES GENERATED ON)
    add_custom_command(
        OUTPUT ${directory}.stamp
        BYPRODUCTS ${written}
        COMMAND ${TAMSEL_GEN} ${ARGN} ${directory} ${files}
        COMMAND ${CMAKE_COMMAND} -E touch ${directory}.stamp
        DEPENDS ${files} ${gen_depends}
        COMMENT "Generating modules into ${directory}"
        VERBATIM)
    set(${prefix}_SOURCES ${directory}.stamp ${sources} PARENT_SCOPE)
    set(${prefix}_TABLES ${tables} PARENT_SCOPE)
endfunction()

# Adds the set of modules in asn1/`name`; options of the generator may follow.
function(tamsel_module_set name)
    file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/asn1/${name}/*.asn)
    tamsel_generate(set ${TAMSEL_MODULE_DIR}/${name} "${files}" ${ARGN})
    # Traced decoders do not have to be fast. Those of 1998 have to be small, because the exports
    # contain them; the others are compiled without optimisation, in half the time. In plain decoders
    # the compiler should keep the cursor in registers: if it loads and stores several members at
    # once, these wait for each other. Printers call the run-time, which does the work: they are as fast
    # with less optimisation.
    set(trace_option -Os)
    if(NOT name STREQUAL 1998)
        set(trace_option -O0)
    endif()
    foreach(file IN LISTS set_SOURCES)
        if(file MATCHES "Trace\\.cpp$")
            set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS
                $<$<NOT:$<CONFIG:Debug>>:${trace_option}>)
        elseif(file MATCHES "Decode\\.cpp$")
            set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS
                "$<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize;-ftree-partial-pre>")
        elseif(file MATCHES "Print\\.cpp$")
            set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS
                $<$<CONFIG:Release>:-O1>)
        endif()
    endforeach()
    add_custom_target(tamsel_modules_${name} DEPENDS ${TAMSEL_MODULE_DIR}/${name}.stamp)
    set(TAMSEL_ASN1_FILES_${name} ${files} PARENT_SCOPE)
    set(TAMSEL_MODULE_SOURCES ${TAMSEL_MODULE_SOURCES} ${set_SOURCES} PARENT_SCOPE)
    set(TAMSEL_TYPE_TABLES ${TAMSEL_TYPE_TABLES} ${set_TABLES} PARENT_SCOPE)
endfunction()

tamsel_module_set(1998)
tamsel_module_set(2009 --namespace asn2009 --published)
set(TAMSEL_MODULE_INCLUDES ${TAMSEL_MODULE_DIR}/1998 ${TAMSEL_MODULE_DIR})
