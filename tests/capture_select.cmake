# cmake -DCAPTURE=program -DCAPTURES=... -DOUT=... -P capture_select.cmake: the messages that
# tamsel-capture shows, the frames that it writes, and input that does not end.
include(${CMAKE_CURRENT_LIST_DIR}/capture_run.cmake)

# How many messages of the sample each selection has: RAS, call signalling and H.245.
foreach(row
        "--host=17.2.0.1=4,0,0"
        "--host=17.2.0.1,::1=4,0,0"
        "--message=Setup,releaseComplete=0,2,0"
        "--from=12:00:00.075 --to=12:00:00.3=0,4,5"
        "--from=2002-05-31T12:00:00.425000Z=1,1,0"
        "--to=2002-05-30=0,0,0"
        "--family=ras,ui --host=17.2.0.122 --to=12:00:00.1=0,2,0"
        "--filter=udp=4,0,0"
        "--filter=tcp and not port 1720=0,0,0"
        "--filter=host 17.2.0.1 --message=infoRequest=1,0,0")
    string(REGEX MATCH "^(.*)=([0-9]+),([0-9]+),([0-9]+)$" row "${row}")
    set(counts "${CMAKE_MATCH_2} ras, ${CMAKE_MATCH_3} ui, ${CMAKE_MATCH_4} h245")
    string(REPLACE " --" ";--" options "${CMAKE_MATCH_1}")
    execute_process(COMMAND ${CAPTURE} --list ${options} call.pcap WORKING_DIRECTORY ${CAPTURES}
        OUTPUT_QUIET ERROR_VARIABLE stderr)
    expect_match("${options}" "${stderr}" " messages?: ${counts}[; ]")
endforeach()
run(2 --host 17.2.0.300 call.pcap)
expect_match("--host" "${stderr}" "--host 17.2.0.300: not an address")
run(2 --from noon call.pcap)
expect_match("--from" "${stderr}" "--from noon: a time is 2026-11-22T05:11:39 or 05:11:39")
run(2 --filter "udp prt 1" call.pcap)
expect_match("--filter" "${stderr}" "--filter udp prt 1: ")
# A filter expression for frames of several link types.
run(0 --list --filter "udp port 1719" interfaces.pcapng)
expect_match("--filter" "${stderr}" "7 messages: 7 ras.*not read: frames of link type DLT 147, which --filter cannot judge: 1\n")

# The frames of messages, from a file, and from standard input, which cannot be read a second time.
run(0 -w ${OUT}/all.pcap call.pcap)
expect("-w shows nothing" "${stdout}" "")
run(0 -w ${OUT}/names.pcap --message setup,admissionRequest call.pcap)
run(0 -o ${OUT}/names ${OUT}/names.pcap)
file(STRINGS ${OUT}/names/index.tsv rows REGEX "^[0-9]")
string(REGEX REPLACE "[^\t]*\t([^\t]*)\t[^\t]*\t[^\t]*\t[^\t]*\t[^\t]*\t([^\t]*)[^;]*(;|$)" "\\1 \\2," rows "${rows}")
expect("-w" "${rows}" "2002-05-31T12:00:00.012500Z admissionRequest,2002-05-31T12:00:00.075000Z setup,2002-05-31T12:00:00.075000Z openLogicalChannel,")
foreach(file all=call.pcap odd=odd.pcap tunnels=tunnels.pcapng)
    string(REPLACE "=" ";" file ${file})
    list(POP_FRONT file name)
    execute_process(COMMAND ${CAPTURE} -w ${OUT}/${name}.pcapng ${CAPTURES}/${file} OUTPUT_QUIET ERROR_QUIET)
    execute_process(COMMAND cat ${CAPTURES}/${file}
        COMMAND ${CAPTURE} -w ${OUT}/${name}-piped.pcapng - OUTPUT_QUIET ERROR_QUIET)
    execute_process(COMMAND ${CAPTURE} -w ${OUT}/${name}-redirected.pcapng - OUTPUT_QUIET ERROR_QUIET
        INPUT_FILE ${CAPTURES}/${file})
    file(SHA1 ${OUT}/${name}.pcapng read_twice)
    foreach(way piped redirected)
        file(SHA1 ${OUT}/${name}-${way}.pcapng kept)
        expect("-w ${name}: ${way}, as from a file" ${kept} ${read_twice})
    endforeach()
    if(name STREQUAL "odd")
        continue()  # some of its streams cannot be read without their SYN
    endif()
    execute_process(COMMAND ${CAPTURE} --list ${CAPTURES}/${file} OUTPUT_QUIET ERROR_VARIABLE before)
    execute_process(COMMAND ${CAPTURE} --list ${OUT}/${name}.pcapng OUTPUT_QUIET ERROR_VARIABLE after)
    string(REGEX MATCH "[0-9]+ messages: [^\n]*" before "${before}")
    string(REGEX MATCH "[0-9]+ messages: [^\n]*" after "${after}")
    expect("-w ${name}" "${after}" "${before}")
endforeach()
run(0 -w ${OUT}/two.pcap first.pcap second.pcap)
run(0 --list ${OUT}/two.pcap)
expect_match("-w of two captures" "${stderr}" "19 messages: 4 ras, 5 ui, 10 h245 .*; 0 refused")
run(2 -w ${OUT}/interfaces.pcap interfaces.pcapng)
expect_match("-w" "${stderr}" "interfaces.pcap: a pcap file cannot hold frames of Ethernet and of Raw IP; a FILE.pcapng can")
file(COPY ${CAPTURES}/call.pcap DESTINATION ${OUT})
run(2 -w ${OUT}/call.pcap ${OUT}/call.pcap)
expect_match("-w over its input" "${stderr}" "-w .*/call.pcap: this file is an input")
run(2 --html ${OUT}/call.pcap ${OUT}/call.pcap)
expect_match("--html over its input" "${stderr}" "--html .*/call.pcap: this file is an input")
file(SHA1 ${OUT}/call.pcap before)
file(SHA1 ${CAPTURES}/call.pcap after)
expect("the input is unchanged" ${after} ${before})
run(2 -w /dev/full call.pcap)
expect_match("-w" "${stderr}" "/dev/full: writing failed")

# A pipe that stays open: lines are written before it is closed, and a signal ends the program with the
# summary.
file(WRITE ${OUT}/live.sh [=[
capture=$1 file=$2 out=$3
mkfifo $out/pipe
timeout --foreground -k 5 60 $capture --list - <$out/pipe >$out/live.txt 2>$out/live.err &
exec 9>$out/pipe
cat $file >&9
for ((i = 0; i < 100; ++i)); do
    [[ $(wc -l <$out/live.txt) -ge 19 ]] && break
    sleep 0.1
done
cp $out/live.txt $out/before.txt
kill -TERM $!
wait $!
echo "exit $?"
]=])
execute_process(COMMAND bash ${OUT}/live.sh ${CAPTURE} ${CAPTURES}/call.pcap ${OUT} OUTPUT_VARIABLE stdout)
expect("a signal ends a pipe" "${stdout}" "exit 0\n")
file(READ ${OUT}/before.txt before)
run(0 --list call.pcap)
expect("before a pipe is closed" "${before}" "${stdout}")
file(READ ${OUT}/live.err err)
expect("the summary after a signal" "${err}" "${stderr}")

# An interface, if this user has the permission to read it.
file(WRITE ${OUT}/interface.sh [=[
capture=$1 out=$2
timeout --foreground -k 5 60 $capture --list -i lo --filter 'udp port 1719' >$out/lo.txt 2>$out/lo.err &
for ((i = 0; i < 50; ++i)); do
    printf '\x40\x00\x00' >/dev/udp/127.0.0.1/1719
    sleep 0.1
    [[ -s $out/lo.txt ]] && break
    kill -0 $! 2>/dev/null || break
done
kill -INT $! 2>/dev/null
wait $!
echo "exit $?"
]=])
execute_process(COMMAND bash ${OUT}/interface.sh ${CAPTURE} ${OUT} OUTPUT_VARIABLE stdout)
file(READ ${OUT}/lo.txt text)
file(READ ${OUT}/lo.err err)
if(err MATCHES "permi[st]|socket")
    message(STATUS "no interface is read: ${err}")
else()
    expect("-i" "${stdout}" "exit 0\n")
    expect_match("-i" "${text}" "127.0.0.1:1719 .*disengageConfirm")
    expect_match("-i" "${err}" "messages?: [0-9]+ ras, 0 ui, 0 h245; 0 refused")
endif()
run(2 -i no-such-interface)
expect_match("-i" "${stderr}" "no-such-interface: ")

# Totals.
run(0 --stats call.pcap)
file(READ ${CAPTURES}/call-stats.txt stats)
expect("--stats" "${stdout}" "${stats}")
