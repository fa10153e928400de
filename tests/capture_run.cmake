# What the scripts that run tamsel-capture have in common: an empty folder OUT, and functions.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${OUT})
file(MAKE_DIRECTORY ${OUT})

# run(STATUS ARGS...): runs tamsel-capture in the folder of captures, compares the exit status, and sets
# stdout and stderr.
function(run status)
    execute_process(COMMAND ${CAPTURE} ${ARGN} WORKING_DIRECTORY ${CAPTURES}
        RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL status)
        message(SEND_ERROR "tamsel-capture ${ARGN}: exit ${result}\n${out}\n--\n${err}")
    endif()
    set(stdout "${out}" PARENT_SCOPE)
    set(stderr "${err}" PARENT_SCOPE)
endfunction()

# expect(WHAT GOT WANTED), and the same for a part and a regular expression: reports a difference.
function(expect what got wanted)
    if(NOT got STREQUAL wanted)
        message(SEND_ERROR "${what}:\n${got}\n-- wanted\n${wanted}")
    endif()
endfunction()

function(expect_part what got wanted)
    string(FIND "${got}" "${wanted}" found)
    if(found LESS 0)
        message(SEND_ERROR "${what}:\n${got}\n-- wanted in it\n${wanted}")
    endif()
endfunction()

function(expect_match what got wanted)
    if(NOT got MATCHES "${wanted}")
        message(SEND_ERROR "${what}:\n${got}\n-- wanted\n${wanted}")
    endif()
endfunction()
