# cmake -DPAGE=folder -DSCRIPTS=a.js;b.js -DSTYLES=a.css;b.css -DOUT=page.cpp -P embed_page.cmake:
# makes one HTML page of page.html, the styles and the scripts, and a C++ file that contains it. The
# content security policy of the page allows only these scripts and styles, by their hashes.

# The base64 form of octets in hex. Their number modulo 3 must be 2, as it is for SHA-256.
function(base64_of_hex hex result)
    set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
    set(text "")
    string(REGEX MATCHALL "....?.?.?" groups "${hex}00")
    foreach(group IN LISTS groups)
        math(EXPR bits "0x${group}")
        foreach(shift 18 12 6 0)
            math(EXPR digit "(${bits} >> ${shift}) & 63")
            string(SUBSTRING ${digits} ${digit} 1 digit)
            string(APPEND text ${digit})
        endforeach()
    endforeach()
    string(REGEX REPLACE ".$" "=" text ${text})
    set(${result} ${text} PARENT_SCOPE)
endfunction()

function(hash_of text result)
    string(SHA256 hex "${text}")
    base64_of_hex(${hex} hash)
    set(${result} ${hash} PARENT_SCOPE)
endfunction()

# The files of a list, one after the other.
function(read_all names result)
    set(all "")
    foreach(name IN LISTS names)
        file(READ ${PAGE}/${name} text)
        string(APPEND all "\n${text}")
    endforeach()
    set(${result} "${all}" PARENT_SCOPE)
endfunction()

read_all("${STYLES}" style)
read_all("${SCRIPTS}" script)
hash_of("${style}" style_hash)
hash_of("${script}" script_hash)

file(READ ${PAGE}/page.html page)
foreach(part style_hash script_hash style script)
    string(REPLACE "@${part}@" "${${part}}" page "${page}")
endforeach()
string(FIND "${page}" "@data@" at)
string(SUBSTRING "${page}" 0 ${at} head)
math(EXPR at "${at} + 6")
string(SUBSTRING "${page}" ${at} -1 tail)
file(WRITE ${OUT} "// Made by embed_page.cmake.\n#include \"page.h\"\n\n"
    "const std::string_view kPageHead = R\"page(${head})page\";\n\n"
    "const std::string_view kPageTail = R\"page(${tail})page\";\n")
