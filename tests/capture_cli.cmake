# cmake -DCAPTURE=program -DDATA=... -DCAPTURES=... -DOUT=... -P capture_cli.cmake: runs tamsel-capture as
# a user does.
include(${CMAKE_CURRENT_LIST_DIR}/capture_run.cmake)

# All messages and the summary, of the sample and of the captures in wire.md: NAME.pcap=STATUS, compared
# with NAME.txt.
foreach(golden call.pcap=0 resync.pcap=0 several.pcap=0 ports.pcap=0 foreign.pcap=0
        early.pcap=0 shared.pcap=0 reused.pcap=0 refused.pcap=1 around.pcap=0 hostile.pcap=0
        tunnels.pcapng=1 interfaces.pcapng=0)
    string(REGEX MATCH "^((.*)[.].*)=(.)$" golden ${golden})
    set(name ${CMAKE_MATCH_2})
    run(${CMAKE_MATCH_3} --list ${CMAKE_MATCH_1})
    file(READ ${CAPTURES}/${name}.txt listing)
    expect("${name}" "${stdout}${stderr}" "${listing}")
endforeach()

# The alerting in odd.pcap is encoded with the set of 1998, and tunnels octets that are not H.245.
run(1 --modules 1998 --list odd.pcap)
file(READ ${CAPTURES}/odd.txt listing)
expect("odd" "${stdout}${stderr}" "${listing}")

# Compressed, from a file and from a pipe. A build without libzstd says so.
file(READ ${CAPTURES}/interfaces.txt listing)
run(0 --list interfaces.pcapng.gz)
expect("gzip" "${stdout}${stderr}" "${listing}")
execute_process(COMMAND ${CAPTURE} --list - INPUT_FILE ${CAPTURES}/interfaces.pcapng.gz
    OUTPUT_VARIABLE stdout ERROR_VARIABLE stderr)
expect("standard input" "${stdout}${stderr}" "${listing}")
execute_process(COMMAND ${CAPTURE} --list interfaces.pcapng.zst WORKING_DIRECTORY ${CAPTURES}
    OUTPUT_VARIABLE stdout ERROR_VARIABLE stderr)
if(NOT stderr MATCHES "which this build does not read")
    expect("zstd" "${stdout}${stderr}" "${listing}")
endif()

# One call of several: its messages, and the remarks about its streams.
run(0 --list --call 02020202 shared.pcap)
string(REGEX MATCHALL "call [0-9a-f]+" calls "${stdout}")
expect("--call" "${calls}" "call 02020202;call 02020202")
run(0 --list --call c0fef93e resync.pcap)
string(REGEX MATCHALL "passed over|missing" remarks "${stdout}")
expect("--call: only the remarks on its streams" "${remarks}"
    "passed over;passed over;missing;passed over")

# --port takes precedence over content and announced addresses.
run(0 --list --port 1720=none --port 3002=none call.pcap)
expect_part("--port" "${stderr}" "4 messages: 4 ras, 0 ui, 0 h245")
run(0 --list --port 3005=h245 early.pcap)
expect_part("--port" "${stdout}" "10.0.0.1:3004 ---> 10.0.0.3:3005          h245  terminalCapabilitySet g711Alaw64k\n")
run(2 --port 1730 call.pcap)
expect_part("--port" "${stderr}" "--port 1730: a port is given as 1730=ui")

# A call in two captures, which are cut within a TPKT, gives the same list. Frames are counted in each
# capture.
file(READ ${CAPTURES}/call.txt listing)
run(0 --list first.pcap second.pcap)
string(REGEX REPLACE "(^|\n) *[0-9]+  12:" "\\112:" numberless "${listing}")
string(REGEX REPLACE "(^|\n) *[0-9]+  12:" "\\112:" stdout "${stdout}")
expect("two captures" "${stdout}${stderr}" "${numberless}")

# Link types and IPv6.
string(CONCAT info "     1  12:00:00.000000        17.2.0.124:2034 ---> 17.2.0.1:1719          "
    "ras   infoRequest  (call 004091fb)\n")
foreach(file sll.pcap sll2.pcap raw.pcap)
    run(0 --list ${file})
    expect(${file} "${stdout}" "${info}")
endforeach()
run(0 --list six.pcapng)
expect_part("IPv6" "${stdout}" "[2001:db8::1]:3010 ---> [2001:db8::2]:1720     ui    callProceeding")
expect_part("IPv6" "${stdout}" "[2001:db8::1]:3011 ---> [2001:db8::2]:1719     ras   infoRequest")

# Frames are counted as Wireshark counts them: those of messages in fragments, and those after a block
# that is an event.
foreach(file interfaces.pcapng=2,4,5,6,7,8,9 odd.pcap=6,8,10,12,12,12,14,21,19,24,26,30,37,42,44)
    string(REGEX MATCH "^(.*)=(.*)$" file ${file})
    set(wanted "${CMAKE_MATCH_2}")
    set(name ${CMAKE_MATCH_1})
    execute_process(COMMAND ${CAPTURE} --modules 1998 -o ${OUT}/${name} ${CAPTURES}/${name} ERROR_QUIET)
    file(STRINGS ${OUT}/${name}/index.tsv rows REGEX "^[0-9]")
    string(REGEX REPLACE "[^;]*\t([0-9]+)\t[0-9a-f]*(;|$)" "\\1," frames "${rows}")
    expect("frames of ${name}" "${frames}" "${wanted},")
endforeach()

# One file for each message. With the modules of 1998, messages of the sample that are also in tests/data have
# the dumps that are there.
run(0 --modules 1998 -o ${OUT}/files call.pcap)
expect("-o" "${stdout}" "")
file(READ ${CAPTURES}/call.tsv index)
file(READ ${OUT}/files/index.tsv text)
expect("index.tsv" "${text}" "${index}")
file(STRINGS ${CAPTURES}/call.tsv rows)
list(POP_FRONT rows)
set(names index.tsv)
set(all "")
foreach(row IN LISTS rows)
    string(REPLACE "\t" ";" row "${row}")
    list(GET row 9 name)
    list(APPEND names ${name})
    list(GET row 1 time)
    list(GET row 0 number)
    list(GET row 2 source)
    list(GET row 3 destination)
    list(GET row 4 transport)
    list(GET row 5 family)
    list(GET row 6 message)
    list(GET row 7 octets)
    set(reference "")
    if(transport STREQUAL "tcp" AND family STREQUAL "ui")
        set(reference ", reference 42")
    endif()
    file(READ ${OUT}/files/${name} text)
    string(APPEND all "==> ${number} ${time} ${source} > ${destination} ${transport} ${family} "
        "${message}, ${octets} octets${reference} <==\n${text}")
    set(vector ${DATA}/${family}-${message}.txt)
    if(EXISTS ${vector} AND name MATCHES "txt$" AND NOT message MATCHES "infoRequest|releaseComplete")
        file(READ ${vector} dump)
        expect("${name}" "${text}" "${dump}")
        math(EXPR compared "${compared} + 1")
    endif()
endforeach()
file(GLOB found RELATIVE ${OUT}/files ${OUT}/files/*)
list(SORT found)
list(SORT names)
expect("files" "${found}" "${names}")
expect("dumps compared" "${compared}" "13")
run(0 --modules 1998 --dump call.pcap)
expect("dumps under headings" "${stdout}" "${all}")

# A message that does not decode is written in hex, which tamsel-dump reads.
run(1 --modules 1998 -o ${OUT}/odd --family h245 odd.pcap)
file(GLOB refused ${OUT}/odd/*-h245-unknown.hex)
list(LENGTH refused count)
expect("refused" ${count} 2)
file(READ ${OUT}/odd/000002-120000.137500-h245-unknown.hex text)
expect("refused" "${text}" "9a152d169f53\n")

# Filters.
run(0 --list --family ras,ui call.pcap)
string(REGEX MATCHALL "\n" lines "${stdout}")
list(LENGTH lines count)
expect("--family" ${count} 9)
run(0 --list --call C0FEF93E-CD9E call.pcap)
string(REGEX REPLACE "^[^\n]*gatekeeperRequest[^\n]*\n" "" rest "${listing}")
string(REGEX REPLACE "tamsel-capture:.*" "" rest "${rest}")
expect("--call" "${stdout}" "${rest}")
run(1 --list --call c1 odd.pcap)
expect("--call of another: no messages and no remarks" "${stdout}" "")
expect_part("--call of another" "${stderr}" "no message of call c1")
run(0 --list --call c0fe call.pcap)

# The list of calls; the diagrams of some calls; the output on terminals.
foreach(golden calls=calls.pcap calls-1=calls.pcap,1 calls-5=calls.pcap,0505 ten=ten.pcap,1
        resync-call=resync.pcap,1)
    string(REGEX MATCH "^(.*)=(.*)$" golden ${golden})
    set(name ${CMAKE_MATCH_1})
    string(REPLACE "," ";" arguments ${CMAKE_MATCH_2})
    run(0 ${arguments})
    file(READ ${CAPTURES}/views/${name}.txt view)
    expect("${name}" "${stdout}${stderr}" "${view}")
endforeach()
run(0 --modules 1998 calls.pcap)
file(READ ${CAPTURES}/views/calls.txt view)
expect("both sets of modules give the same list of calls" "${stdout}${stderr}" "${view}")
find_program(PYTHON python3)
foreach(width 80 200)
    execute_process(COMMAND ${PYTHON} terminal.py ${width} ${CAPTURE} WORKING_DIRECTORY ${CAPTURES}
        OUTPUT_VARIABLE stdout COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${CAPTURES}/views/terminal-${width}.txt view)
    expect("terminal of ${width} columns" "${stdout}" "${view}")
endforeach()

# Hostile text is never written unescaped, neither to a terminal nor into a pipe.
foreach(arguments hostile.pcap hostile.pcap,1 --list,hostile.pcap)
    string(REPLACE "," ";" arguments ${arguments})
    run(0 ${arguments})
    string(REGEX MATCH "[^ -~\n]" raw "${stdout}")
    expect("escaped: ${arguments}" "${raw}" "")
    expect_part("escaped: ${arguments}" "${stdout}" "\\x1b[31m")
endforeach()

# The help fits on one screen.
run(0 --help)
string(REPEAT "[^\n]" 81 wide)
string(REGEX MATCHALL "\n" lines "${stdout}")
list(LENGTH lines count)
if(count GREATER 42 OR stdout MATCHES "${wide}")
    message(SEND_ERROR "--help: ${count} lines\n${stdout}")
endif()

# One call of several, in each view.
run(0 --dump calls.pcap 4)
string(REGEX MATCHALL "==> [^\n]*" headings "${stdout}")
string(REGEX REPLACE "==> [^;]* ras ([a-zA-Z]*)[^;]*" "\\1" headings "${headings}")
expect("--dump of a call" "${headings}" "admissionRequest;admissionReject")
run(0 -o ${OUT}/call-2 calls.pcap 2)
file(STRINGS ${OUT}/call-2/index.tsv rows REGEX "^[0-9]")
list(LENGTH rows count)
expect("-o of a call" ${count} 5)
run(1 calls.pcap 6)
expect_part("no such call" "${stderr}" "no message of call 6")
run(1 calls.pcap 0123)
expect_part("no such call" "${stderr}" "no message of call 0123")
run(2 calls.pcap 1 2)
expect_part("two calls" "${stderr}" "2: another call, or no such file")
run(2 1)
expect_part("no file" "${stderr}" "FILE is required")

run(0 --calls calls.pcap 2)
string(REGEX MATCHALL "\n" lines "${stdout}")
list(LENGTH lines count)
expect("--calls of a call: no other call, and no endpoint" ${count} 2)

# Files that cannot be read are reported; what was read before is written.
run(2 --list cut.pcap)
expect_part("cut" "${stderr}" "tamsel-capture: cut.pcap: truncated dump file")
expect_part("cut" "${stdout}" "ras   admissionConfirm at 17.2.0.122:1720 256 kbit/s  (call c0fef93e)\n")
run(2 --list unknown.pcap raw.pcap)
expect_part("link type" "${stderr}" "unknown.pcap: link type DLT 147 is not supported")
expect_part("link type" "${stderr}" "not read: frames of link type DLT 147: 1")
expect("the next is read" "${stdout}" "${info}")
run(2 --list missing.pcap)
expect_part("missing" "${stderr}" "missing.pcap: no such file")
run(2 --list call.txt)
expect_part("no capture" "${stderr}" "call.txt: unknown file format")
run(2 --list --call xyz call.pcap)
expect_part("--call" "${stderr}" "not 1 to 32 hex digits")
run(2 --family h323 call.pcap)
run(2)
run(2 -o ${CAPTURES}/call.pcap/folder call.pcap)

# A folder that is not empty is an error, and is left unchanged.
run(2 -o ${OUT}/files odd.pcap)
expect_part("a full folder" "${stderr}" "/files: not an empty folder")
file(GLOB found RELATIVE ${OUT}/files ${OUT}/files/*)
list(SORT found)
expect("a full folder" "${found}" "${names}")

# Failures of writing: a file, the index, standard output.
foreach(full "000001-[^ ]+=0=call.pcap" "0000[^ ]+=1=call.pcap"
        "index.tsv=1=--modules 1998 --message infoRequest tunnels.pcapng")
    string(REGEX MATCH "^(.*)=(.*)=(.*)$" full "${full}")
    set(name ${CMAKE_MATCH_1})
    set(limit ${CMAKE_MATCH_2})
    set(arguments ${CMAKE_MATCH_3})
    string(RANDOM folder)
    execute_process(COMMAND bash -c
        "trap '' XFSZ && ulimit -f ${limit} && exec ${CAPTURE} -o ${OUT}/${folder} ${arguments}"
        WORKING_DIRECTORY ${CAPTURES} RESULT_VARIABLE result ERROR_VARIABLE err)
    expect_match("full" "${result}${err}" "^2tamsel-capture: ${name}: writing failed\n$")
endforeach()
foreach(option --list --family=ras)
    execute_process(COMMAND ${CAPTURE} ${option} call.pcap WORKING_DIRECTORY ${CAPTURES}
        OUTPUT_FILE /dev/full RESULT_VARIABLE result ERROR_VARIABLE err)
    expect("full" "${result}${err}" "2tamsel-capture: standard output: writing failed\n")
endforeach()
