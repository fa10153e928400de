# cmake -DHOST=program;with;launcher -DDATA=... -P host_all.cmake: every message of the data folder
# through a host in C.
file(GLOB names RELATIVE ${DATA} ${DATA}/*.hex)
list(TRANSFORM names REPLACE "\\.hex$" "")
execute_process(COMMAND ${HOST} ${DATA} ${names} COMMAND_ERROR_IS_FATAL ANY)
