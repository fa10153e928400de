# cmake -DGEN=... -DSOURCES=... -DMODULES=folder -DOUT=... -P order.cmake: the generated files
# do not depend on the order of the modules.
file(REMOVE_RECURSE ${OUT})
file(MAKE_DIRECTORY ${OUT})
list(REVERSE SOURCES)
execute_process(COMMAND ${GEN} ${OUT} ${SOURCES} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB built RELATIVE ${MODULES} ${MODULES}/*)
file(GLOB made RELATIVE ${OUT} ${OUT}/*)
if(NOT made STREQUAL built)
    message(FATAL_ERROR "made: ${made}, not: ${built}")
endif()
foreach(name IN LISTS built)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${MODULES}/${name} ${OUT}/${name}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
