# Runs the generator over asn1/: a further module is a further file there.
#   TAMSEL_MODULE_DIR      where headers and sources are written
#   TAMSEL_MODULE_SOURCES  decoders and printers
#   TAMSEL_TYPE_TABLES     tables of all types, for tests and fuzzers

file(GLOB TAMSEL_ASN1_FILES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/asn1/*.asn)
set(TAMSEL_MODULE_DIR ${CMAKE_CURRENT_BINARY_DIR}/modules)
file(MAKE_DIRECTORY ${TAMSEL_MODULE_DIR})

if(CMAKE_CROSSCOMPILING)
    include(ExternalProject)
    ExternalProject_Add(tamsel_gen_native
        SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}/gen
        BINARY_DIR ${CMAKE_CURRENT_BINARY_DIR}/gen-native
        CMAKE_ARGS -DCMAKE_BUILD_TYPE=Release
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

# Adds the command that writes the modules of `files` into `directory`. What it writes is listed in
# `prefix`_SOURCES and `prefix`_TABLES. The generator leaves a file alone that would not change, so
# that nothing made of it is built again; the stamp, which is among the sources, tells that it ran.
function(tamsel_generate prefix directory files)
    set(headers)
    set(sources)
    set(tables)
    foreach(file IN LISTS files)
        get_filename_component(stem ${file} NAME_WE)
        list(APPEND headers ${directory}/${stem}.h ${directory}/${stem}Decode.h)
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
        COMMAND ${TAMSEL_GEN} ${directory} ${files}
        COMMAND ${CMAKE_COMMAND} -E touch ${directory}.stamp
        DEPENDS ${files} ${gen_depends}
        COMMENT "Generating modules into ${directory}"
        VERBATIM)
    set(${prefix}_SOURCES ${directory}.stamp ${sources} PARENT_SCOPE)
    set(${prefix}_TABLES ${tables} PARENT_SCOPE)
endfunction()

tamsel_generate(TAMSEL_MODULE ${TAMSEL_MODULE_DIR} "${TAMSEL_ASN1_FILES}")
set(TAMSEL_TYPE_TABLES ${TAMSEL_MODULE_TABLES})
# A traced decode need not be fast. For the others, the compiler should keep the cursor in
# registers: loads and stores of several members at once would wait for each other.
foreach(file IN LISTS TAMSEL_MODULE_SOURCES)
    if(file MATCHES "Trace\\.cpp$")
        set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS
            $<$<NOT:$<CONFIG:Debug>>:-Os>)
    elseif(file MATCHES "Decode\\.cpp$")
        set_source_files_properties(${file} PROPERTIES COMPILE_OPTIONS
            "$<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize;-ftree-partial-pre>")
    endif()
endforeach()
add_custom_target(tamsel_modules DEPENDS ${TAMSEL_MODULE_DIR}.stamp)
