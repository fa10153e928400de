# cmake -DGEN=... [-DOPTIONS=...] -DSOURCE=... -DGOLDEN=... -DOUT=... -P run.cmake: the messages for a
# wrong module.
file(MAKE_DIRECTORY ${OUT})
execute_process(COMMAND ${GEN} ${OPTIONS} ${OUT} ${SOURCE}
    RESULT_VARIABLE result ERROR_VARIABLE messages OUTPUT_VARIABLE output)
file(READ ${GOLDEN} expected)
if(NOT result EQUAL 1 OR NOT messages STREQUAL expected)
    message(FATAL_ERROR "exit ${result}:\n${messages}")
endif()
