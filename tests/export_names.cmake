# cmake -DNM=... -DLIBRARY=... -P export_names.cmake: the library exports its three functions only.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[0-9a-f]+ ([A-Za-z]) ([^\n]*)\n" "\\1 \\2;" symbols "${symbols}")
list(SORT symbols)
set(expected "T H323H245ASNDecode;T H323RASASNDecode;T H323UserInfoASNDecode")
list(REMOVE_ITEM symbols "")
if(NOT symbols STREQUAL expected)
    message(FATAL_ERROR "exported: ${symbols}")
endif()
