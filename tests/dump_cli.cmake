# cmake -DDUMP=program;with;launcher -DDATA=... -DGOLDEN=... -DOUT=... -P dump_cli.cmake: runs
# tamsel-dump as a user does.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${OUT})
file(MAKE_DIRECTORY ${OUT})
set(name h245-masterSlaveDetermination)
file(READ ${DATA}/${name}.txt dump_1998)
string(REGEX REPLACE "[^\n]*extElem1.*" "" dump "${dump_1998}")  # there are no additions
string(REPLACE "9588693" "854554" control "${dump}")  # of control.bin
file(READ ${GOLDEN}/fields.txt fields)
file(COPY ${GOLDEN}/control.bin ${GOLDEN}/wrapped.hex DESTINATION ${OUT})
file(WRITE ${OUT}/one.hex "0x01 00:00 80 92 4F d5\n")
file(WRITE ${OUT}/wrapped-lines.hex "01 00 00 80\n92 4F D5\n")
file(WRITE ${OUT}/two.hex "01 00 00 80 92\n01 00 00 80 92 4F D5 05\n")
file(WRITE ${OUT}/bad.hex "01 00\n00 8x\n")
file(WRITE ${OUT}/cut.hex "01")
file(WRITE ${OUT}/none.hex "7f 03")
file(WRITE ${OUT}/tpkt.hex "0300000b01000080924fd5")
file(WRITE ${OUT}/long.hex "0300000c01000080924fd5")
string(REPEAT "00" 70000 large)
file(WRITE ${OUT}/bare.hex "080200015a")
file(WRITE ${OUT}/large.hex 01000080924fd5${large})
file(WRITE ${OUT}/empty.hex "")
file(WRITE ${OUT}/blank.hex " \n")
file(WRITE ${OUT}/decodes.hex "0300000a000000000000")

# run(INPUT ARGS): sets result, stdout and stderr of the caller. CMake drops each CR before a LF.
function(run input arguments)
    execute_process(COMMAND ${DUMP} ${arguments} WORKING_DIRECTORY ${OUT} INPUT_FILE ${input}
        RESULT_VARIABLE result OUTPUT_VARIABLE stdout ERROR_VARIABLE stderr)
    return(PROPAGATE result stdout stderr)
endfunction()

# check(ARGS status stdout [LINE...]): standard error has these lines only, each after "tamsel-dump: ".
function(check arguments status output)
    run(${DATA}/${name}.hex "${arguments}")
    set(errors "")
    foreach(line IN LISTS ARGN)
        string(APPEND errors "tamsel-dump: ${line}\n")
    endforeach()
    if(NOT result EQUAL status OR NOT stdout STREQUAL output OR NOT stderr STREQUAL errors)
        message(SEND_ERROR "tamsel-dump ${arguments}: exit ${result}\n${stdout}--\n${stderr}")
    endif()
endfunction()

set(end "Unexpected end of buffer on decode (status -2)")
set(root MultimediaSystemControlMessage)
set(inner ${root}.u@request.u@masterSlaveDetermination)
set(short "no H.245 message: ${end} at bit 32, 1 octet left, in \
${inner}.statusDeterminationNumber ConsInteger")
set(cut "${end} at bit 8, 0 octets left, after ${root}.u@request ConsUnsigned")

check("h245" 0 "${dump}")
check("h245;-" 0 "${dump}")
check("--modules;1998;h245;one.hex" 0 "${dump_1998}")
check("--modules;2009;h245;one.hex" 0 "${dump}")
check("h245;one.hex" 0 "${dump}")
check("h245;control.bin" 0 "${control}")
check("h245;one.hex;control.bin" 0 "==> one.hex <==\n${dump}==> control.bin <==\n${control}")
check("h245;two.hex" 1 "==> two.hex:2 <==\n${dump}" "two.hex:1: ${short}"
    "two.hex:2: the message takes 7 of 8 octets")
check("h245;--join;wrapped-lines.hex" 0 "${dump}")
check("h245;large.hex" 0 "${dump}" "large.hex: the message takes 7 of 70007 octets")
check("h245;cut.hex;one.hex" 1 "==> one.hex <==\n${dump}" "cut.hex: no H.245 message: ${cut}")
check("h245;none.hex" 1 "" "none.hex: no H.245 message: ${end} at bit 16, 0 octets left, after \
${root}.u@indication length")
check("h245;tpkt.hex" 1 "" "tpkt.hex: no H.245 message: ${end} at bit 80, 1 octet left, in \
${root}.u@request.u@openLogicalChannel.forwardLogicalChannelParameters.multiplexParameters \
OctetString"
    "hint: these octets begin like TPKT\; --strip removes it")
check("--unaligned;h245;cut.hex" 1 "" "cut.hex: no H.245 message (UNALIGNED): ${cut}")

check("--check;h245;two.hex;one.hex" 1 "two.hex:1: ${short}
two.hex:2: decodes, 7 of 8 octets
one.hex: decodes, 7 octets
")
check("--check;ui;decodes.hex" 0 "decodes.hex: decodes, 5 of 10 octets\n"
    "hint: these octets begin like TPKT\\; --strip removes it")
check("--fields;h245;two.hex" 1 "${fields}" "two.hex:1: ${short}"
    "two.hex:2: the message takes 7 of 8 octets")
check("--strip;h245;tpkt.hex" 0 "${dump}")
check("--strip;h245;one.hex" 0 "${dump}")
check("--strip;h245;long.hex" 2 "" "long.hex: 11 of 11 octets are not in a complete TPKT")
check("--strip;ui;bare.hex" 2 "" "bare.hex: no complete Q.931 message with a user-user element")
check("--strip;--check;ui;wrapped.hex" 0 "wrapped.hex:1 (message 1): decodes, 33 octets
wrapped.hex:1 (message 2): decodes, 33 octets
wrapped.hex:2: decodes, 33 octets
wrapped.hex:3: decodes, 33 octets
")

check("h245;bad.hex;one.hex" 2 "==> one.hex <==\n${dump}"
    "bad.hex: 'x' is no hex digit at line 2, column 5")
check("h245;empty.hex;blank.hex" 2 "" "empty.hex: no message" "blank.hex: no message")
check("h245;missing.hex;cut.hex" 2 "" "missing.hex: cannot be read" "cut.hex: no H.245 message: ${cut}")
check("-o;missing/dump.txt;h245;one.hex" 2 "" "missing/dump.txt: cannot be written")
run(${OUT}/control.bin "h245")
if(NOT stdout STREQUAL control)
    message(SEND_ERROR "octets on standard input: ${stdout}${stderr}")
endif()
run(${OUT}/one.hex "x245")
if(NOT result EQUAL 2 OR NOT stderr MATCHES "x245")
    message(SEND_ERROR "unknown family: exit ${result}\n${stderr}")
endif()

# -o: a dump replaces the file; without a dump it is left unchanged. Lines end as on the system.
set(textFile "${dump}")
if("${DUMP}" MATCHES "\\.exe$")
    string(REPLACE "\n" "\r\n" textFile "${dump}")
endif()
string(HEX "${textFile}" expected)
execute_process(COMMAND ${DUMP} h245 one.hex WORKING_DIRECTORY ${OUT} OUTPUT_FILE stdout.txt)
run(${OUT}/one.hex "-o;dump.txt;h245;one.hex")
run(${OUT}/one.hex "-o;dump.txt;h245;cut.hex")
foreach(file stdout.txt dump.txt)
    file(READ ${OUT}/${file} octets HEX)
    if(NOT octets STREQUAL expected)
        message(SEND_ERROR "${file}: ${octets}")
    endif()
endforeach()
if(EXISTS /dev/full AND NOT "${DUMP}" MATCHES "\\.exe$")
    check("-o;/dev/full;h245;one.hex" 2 "" "/dev/full: writing failed")
    execute_process(COMMAND ${DUMP} h245 one.hex WORKING_DIRECTORY ${OUT} OUTPUT_FILE /dev/full
        RESULT_VARIABLE result ERROR_VARIABLE stderr)
    if(NOT "${result}${stderr}" STREQUAL "2tamsel-dump: standard output: writing failed\n")
        message(SEND_ERROR "standard output: ${result}${stderr}")
    endif()
endif()

# The help fits on one screen.
run(${OUT}/one.hex "--help")
string(REPLACE ";" "," help "${stdout}")
string(REGEX REPLACE "\n$" "" help "${help}")
string(REPLACE "\n" ";" lines "${help}")
list(LENGTH lines count)
foreach(line IN LISTS lines)
    string(LENGTH "${line}" width)
    if(count GREATER 24 OR width GREATER 80)
        message(SEND_ERROR "help of ${count} lines: ${line}")
    endif()
endforeach()

# On a terminal no character of a message is a control character.
find_program(SCRIPT script)
if(SCRIPT AND NOT "${DUMP}" MATCHES "\\.exe$")
    list(JOIN DUMP " " program)
    set(file ${DATA}/alt-ras-admissionConfirm-unaligned.hex)
    execute_process(COMMAND ${SCRIPT} -qec "${program} --unaligned ras ${file}" /dev/null
        INPUT_FILE /dev/null OUTPUT_VARIABLE stdout)
    string(REGEX REPLACE "[ -~\r\n]" "" rest "${stdout}")
    if(NOT rest STREQUAL "" OR NOT stdout MATCHES "'\\[hyW\\\\x05\\\\x03s~'")
        message(SEND_ERROR "on a terminal: ${stdout}")
    endif()
endif()
