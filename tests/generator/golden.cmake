# cmake -DMADE=folder -DGOLDEN=folder -P golden.cmake: compares each generated file with the expected
# one. After an intended change: for f in MADE/*; do cp $f GOLDEN/$(basename $f).txt; done
file(GLOB made RELATIVE ${MADE} ${MADE}/*)
file(GLOB golden RELATIVE ${GOLDEN} ${GOLDEN}/*)
list(TRANSFORM golden REPLACE "\\.txt$" "")
if(NOT made STREQUAL golden)
    message(FATAL_ERROR "made: ${made}, not: ${golden}")
endif()
foreach(name IN LISTS made)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${MADE}/${name} ${GOLDEN}/${name}.txt
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
