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

set(TAMSEL_MODULE_SOURCES)
set(TAMSEL_TYPE_TABLES)
set(headers)
foreach(file IN LISTS TAMSEL_ASN1_FILES)
    get_filename_component(stem ${file} NAME_WE)
    list(APPEND headers ${TAMSEL_MODULE_DIR}/${stem}.h ${TAMSEL_MODULE_DIR}/${stem}Decode.h)
    list(APPEND TAMSEL_MODULE_SOURCES
        ${TAMSEL_MODULE_DIR}/${stem}Decode.cpp ${TAMSEL_MODULE_DIR}/${stem}Trace.cpp
        ${TAMSEL_MODULE_DIR}/${stem}Print.cpp)
    # A traced decode need not be fast. For the others, the compiler should keep the cursor in
    # registers: loads and stores of several members at once would wait for each other.
    set_source_files_properties(${TAMSEL_MODULE_DIR}/${stem}Trace.cpp PROPERTIES COMPILE_OPTIONS -Os)
    set_source_files_properties(${TAMSEL_MODULE_DIR}/${stem}Decode.cpp PROPERTIES COMPILE_OPTIONS
        "$<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize;-ftree-partial-pre>")
    list(APPEND TAMSEL_TYPE_TABLES ${TAMSEL_MODULE_DIR}/${stem}Types.cpp)
endforeach()

add_custom_command(
    OUTPUT ${headers} ${TAMSEL_MODULE_SOURCES} ${TAMSEL_TYPE_TABLES}
    COMMAND ${TAMSEL_GEN} ${TAMSEL_MODULE_DIR} ${TAMSEL_ASN1_FILES}
    DEPENDS ${TAMSEL_ASN1_FILES} ${gen_depends}
    COMMENT "Generating the message modules"
    VERBATIM)
add_custom_target(tamsel_modules DEPENDS ${headers})
