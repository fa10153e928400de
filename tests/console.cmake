# A host with a console: the text that it prints before and after a call appears. The console writes
# escape sequences, and moves the cursor instead of writing blanks.
execute_process(COMMAND ${CONSOLE} ${HOST} ${DATA} --console h245-terminalCapabilitySet
    RESULT_VARIABLE result OUTPUT_VARIABLE drawn ERROR_VARIABLE ignored)
string(ASCII 27 escape)
string(REGEX REPLACE "${escape}\\[[?0-9;]*[A-Za-z]" "" drawn "${drawn}")
string(REGEX REPLACE "[^a-z]" "" drawn "${drawn}")
if(NOT drawn MATCHES "hostbefore.*hostafter")
    message(FATAL_ERROR "exit ${result}: ${drawn}")
endif()
