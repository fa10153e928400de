# cmake -DDLLTOOL=... -DDEFINITION=Tamsel.def -DLIBRARY=... -DOUT=folder -P import_library.cmake: a user
# who runs dlltool in another folder gets the import library that is shipped, octet for octet.
file(MAKE_DIRECTORY ${OUT})
execute_process(COMMAND ${DLLTOOL} -d ${DEFINITION} -t tamsel -l libTamsel.a
    WORKING_DIRECTORY ${OUT} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT}/libTamsel.a ${LIBRARY}
    COMMAND_ERROR_IS_FATAL ANY)
